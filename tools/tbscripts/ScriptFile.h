#pragma once

#include <tbScripts/Script.h>

#include <string>
#include <vector>

namespace tool
{

struct Document;

/// A script and its label in messages: its file, in a document with the script's name in
/// parentheses.
struct LabelledScript
{
    std::string label; // escaped
    tbScripts::Script script;
};

/// The scripts of a file, not compiled.
struct ScriptFile
{
    std::vector<LabelledScript> scripts;
    std::vector<std::string> troubles; // whole lines
};

/// Reads a script or a document.
ScriptFile readScriptFile(const std::string& path);

/// The same for a document that is read already.
ScriptFile takeScripts(const std::string& path, const Document& document);

} // namespace tool
