#include "Options.h"

#include "support/Failure.h"

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace bench
{

namespace
{

constexpr const char* USAGE = R"(Usage: TobrelScriptsBench [options]

  --smoke           few operations, each once; says only whether everything works
  --repetitions N   of each side of each row, 11 unless given
  --only TEXT       only rows whose subject or name contains TEXT
  --output FOLDER   where results.json, results.md and results.svg go; those of a smoke run go
                    into its folder smoke
  --profile N       run variant N of the chosen rows, 0 for the library, 1 for the first other
                    side, as often as there are repetitions, and measure nothing
)";

int readNumber(const char* text)
{
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || number < 0 || number > 1000)
        fail(std::string("not a number from 0 to 1000: ") + text);
    return static_cast<int>(number);
}

[[noreturn]] void printUsageAndEnd()
{
    std::cout << USAGE;
    std::exit(EXIT_SUCCESS);
}

} // namespace

Options readOptions(int count, char** arguments)
{
    Options options;
    for (int i = 1; i < count; ++i)
    {
        const std::string_view argument = arguments[i];
        const bool hasValue = i + 1 < count;
        if (argument == "--help")
            printUsageAndEnd();
        else if (argument == "--smoke")
            options.isSmoke = true;
        else if (argument == "--repetitions" && hasValue)
            options.repetitions = readNumber(arguments[++i]);
        else if (argument == "--only" && hasValue)
            options.only = arguments[++i];
        else if (argument == "--output" && hasValue)
            options.outputFolder = arguments[++i];
        else if (argument == "--profile" && hasValue)
            options.profiledVariant = readNumber(arguments[++i]);
        else
            fail(USAGE);
    }
    if (options.isSmoke || options.repetitions < 1)
        options.repetitions = 1;
    return options;
}

} // namespace bench
