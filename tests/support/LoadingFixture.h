#pragma once

#include "support/LogFixture.h"
#include "support/TemporaryFolder.h"

#include <tbExport/ExporterLoadResult.h>
#include <tbExport/Node.h>
#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptManager.h>

#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

/// An object of a document: names and texts in their order. What is no text reads "<no text>".
using Members = std::vector<std::pair<std::string, std::string>>;

Members membersOf(const tbExport::Node* object);

/// Reads a document, which has to be one.
tbExport::ExporterLoadResult parse(const std::string& document);

/// The six entries that tell of a text that is no document.
std::vector<LogEntry> parseError(const std::string& error, const std::string& context);

std::vector<std::string> textsOf(const tbMemory::BufferCast<tbMemory::String>& texts);
std::vector<std::string> namesOf(const tbMemory::BufferCast<Script*>& scripts);

/// Runs `script` in an environment of its own and returns what it left in the global "x"; -1 if it
/// could not be run or that is no number.
int resultOf(const Script& script);

/// An empty folder that is the working path, and no scripts yet. Afterwards the working path is
/// what it was, and the scripts are gone.
class LoadingFixture : public LogFixture
{
protected:
    LoadingFixture();
    ~LoadingFixture() override;

    /// Files a Lua script; compiles nothing.
    static Script* addScript(const std::string& name, const std::string& sources);

    static Script* getScript(const std::string& name);
    static unsigned int countScripts();
    static void killScripts();

    TemporaryFolder m_folder;

private:
    tbMemory::String m_workingPath;
};

} // namespace tbScripts::test
