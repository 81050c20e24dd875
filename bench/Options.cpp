#include "Options.h"

#include <CLI/CLI.hpp>
#include <cstdlib>

namespace bench
{

namespace
{

constexpr int MAX_NUMBER = 1000;

void describe(CLI::App& parser, Options& options)
{
    parser.add_flag(
        "--smoke",
        options.isSmoke,
        "Few operations, each once: says only whether everything works");
    parser.add_option("--repetitions", options.repetitions, "Of each side of each row")
        ->type_name("N")
        ->check(CLI::Range(0, MAX_NUMBER))
        ->capture_default_str();
    parser.add_option("--only", options.only, "Only rows whose subject or name contains TEXT")
        ->type_name("TEXT");
    parser
        .add_option(
            "--output",
            options.outputFolder,
            "Where results.json, results.md and results.dat go; those of a smoke run go into "
            "its folder smoke")
        ->type_name("FOLDER");
    parser
        .add_option(
            "--profile",
            options.profiledVariant,
            "Run variant N of the chosen rows as often as there are repetitions, and measure "
            "nothing; the ways through the library count from 0, the other sides follow")
        ->type_name("N")
        ->check(CLI::Range(0, MAX_NUMBER));
}

} // namespace

Options readOptions(int count, char** arguments)
{
    Options options;
    CLI::App parser("Measures the library against hand-written code.");
    describe(parser, options);
    try
    {
        parser.parse(count, arguments);
    }
    catch (const CLI::ParseError& endOrMistake)
    {
        std::exit(parser.exit(endOrMistake)); // prints help, or what is wrong
    }
    if (options.isSmoke || options.repetitions < 1)
        options.repetitions = 1;
    return options;
}

} // namespace bench
