// tbscripts: runs, checks and packs scripts from the command line. A host like any other: it uses
// the library through its public headers only.

#include "tbscripts/CommandLine.h"
#include "tbscripts/Commands.h"
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

using tool::COMMAND;
using tool::EXIT_STATUS;

EXIT_STATUS execute(const tool::CommandLine& line)
{
    switch (line.command)
    {
    case COMMAND::NONE:
        return line.status;
    case COMMAND::RUN:
        return tool::runScripts(line);
    case COMMAND::CHECK:
        return tool::checkScripts(line);
    case COMMAND::PACK:
        return tool::packScripts(line);
    case COMMAND::UNPACK:
        return tool::unpackScripts(line);
    case COMMAND::LIST:
        return tool::listScripts(line);
    }
    return EXIT_STATUS::TROUBLE;
}

EXIT_STATUS executeSafely(std::vector<std::string> arguments)
{
    try
    {
        tbResources::ResourceManager::getInstanceRef().setWorkingPath(
            ""); // paths as they are given
        return execute(tool::readCommandLine(std::move(arguments)));
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
