// tbscripts: runs, checks and packs scripts from the command line. A host like any other: it uses
// the library through its public headers only.

#include "tbscripts/CommandLine.h"
#include "tbscripts/Console.h"
#include "tbscripts/Escaping.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/ScriptManager.h>

#include <exception>
#include <string>
#include <utility>
#include <vector>

namespace
{

using tool::EXIT_STATUS;

EXIT_STATUS executeSafely(std::vector<std::string> arguments)
{
    try
    {
        tbResources::ResourceManager::getInstanceRef().setWorkingPath(
            ""); // paths as they are given
        return tool::runCommandLine(std::move(arguments));
    }
    catch (const std::exception& exception) // no memory left, most likely
    {
        tool::report(std::string("tbscripts: ") + tool::escape(exception.what()));
        return EXIT_STATUS::TROUBLE;
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    char** const first = arguments + (argumentCount > 0 ? 1 : 0); // behind the program's name
    EXIT_STATUS status = executeSafely({first, arguments + argumentCount});

    tbScripts::ScriptManager::getInstanceRef().kill();
    tbScripts::LogManager::getInstanceRef().kill();
    tbResources::ResourceManager::getInstanceRef().kill();
    if (!tool::finishOutput())
        status = EXIT_STATUS::TROUBLE;
    return static_cast<int>(status);
}
