#pragma once

#include <tbScripts/Script.h>

#include <string>
#include <vector>

namespace tool
{

struct Document;

/// A script, and how messages call it: by its file, in a document with its name in parentheses.
struct LabelledScript
{
    std::string label; // escaped
    tbScripts::Script script;
};

/// The scripts that a file holds, not compiled.
struct ScriptFile
{
    std::vector<LabelledScript> scripts;
    std::vector<std::string> troubles; // whole lines
};

/// Reads a script or a document.
ScriptFile readScriptFile(const std::string& path);

/// The same for a document that was read already.
ScriptFile takeScripts(const std::string& path, const Document& document);

} // namespace tool
