#include "support/RowName.h"
#include "tools/ToolFixture.h"

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

using CommandLineTest = ToolFixture;

TEST_F(CommandLineTest, NoArgumentsPrintTheHelpAsAnError)
{
    const Outcome help = run({"--help"});

    const Outcome outcome = run({});

    EXPECT_EQ(outcome, trouble(help.output));
}

TEST_F(CommandLineTest, HelpOfACommandShowsItsOptionsAndWhatItNeeds)
{
    const Outcome outcome = run({"pack", "--help"});

    EXPECT_THAT(outcome.output, HasSubstr("\nPositionals:\n  DIR REQUIRED "));
    EXPECT_THAT(outcome.output, HasSubstr("\n  -o,--output FILE REQUIRED "));
}

TEST_F(CommandLineTest, TwoDashesEndTheOptionsBehindAPathToo)
{
    const Outcome outcome = run({"check", "a.lua", "--", "-b.lua", "--help"});

    EXPECT_EQ(
        outcome,
        trouble(
            "tbscripts: a.lua: No such file or directory\n"
            "tbscripts: -b.lua: No such file or directory\n"
            "tbscripts: --help: No such file or directory\n",
            "0 scripts checked, 3 problems with files\n"));
}

TEST_F(CommandLineTest, VersionHasThreeNumbers)
{
    const Outcome outcome = run({"--version"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, MatchesRegex("tbscripts [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(outcome.errors, "");
}

struct HelpRow
{
    const char* row;
    std::vector<std::string> arguments;
    const char* beginning;
    const char* example;
};

using HelpTest = OnRows<ToolFixture, HelpRow>;

TEST_P(HelpTest, TeachesUsageExamplesAndExitStatus)
{
    const Outcome outcome = run(GetParam().arguments);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith(GetParam().beginning));
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().example));
    EXPECT_THAT(outcome.output, HasSubstr("\nExit status:"));
    EXPECT_EQ(outcome.errors, "");
}

ROWS(
    HelpTest,
    {"Overview",
     {"--help"},
     "Runs, checks and packs Lua scripts.\nUsage: tbscripts [OPTIONS] COMMAND\n",
     "\n  tbscripts check scripts/\n"},
    {"OverviewByLetter",
     {"-h"},
     "Runs, checks and packs Lua scripts.\nUsage: tbscripts [OPTIONS] COMMAND\n",
     "\n  tbscripts check scripts/\n"},
    {"Run",
     {"run", "--help"},
     "Runs scripts in one environment, in the order given.\n"
     "Usage: tbscripts run [OPTIONS] FILE...\n",
     "\n  tbscripts run hello.lua\n"},
    {"Check",
     {"check", "--help"},
     "Compiles scripts and reports each one that fails. Runs nothing.\n"
     "Usage: tbscripts check [OPTIONS] FILE...\n",
     "\n  tbscripts check main.lua\n"},
    {"Pack",
     {"pack", "--help"},
     "Packs all .lua files below a folder into a project's list.\n"
     "Usage: tbscripts pack [OPTIONS] DIR\n",
     "\n  tbscripts pack scripts/ -o game_scripts.tbscripts\n"},
    {"Unpack",
     {"unpack", "-h"},
     "Writes the scripts of a document into files: the reverse of pack.\n"
     "Usage: tbscripts unpack [OPTIONS] FILE\n",
     "\n  tbscripts unpack game_scripts.tbscripts -o scripts/\n"},
    {"List",
     {"list", "--help"},
     "Shows the scripts of a file.\nUsage: tbscripts list [OPTIONS] FILE\n",
     "\n  tbscripts list --json game_scripts.tbscripts\n"});

struct RefusalRow
{
    const char* row;
    std::vector<std::string> arguments;
    const char* errors;
};

using RefusedCommandLineTest = OnRows<ToolFixture, RefusalRow>;

TEST_P(RefusedCommandLineTest, SaysWhatIsWrongAndWhereToLook)
{
    const Outcome outcome = run(GetParam().arguments);

    EXPECT_EQ(outcome, trouble(GetParam().errors));
}

ROWS(
    RefusedCommandLineTest,
    {"UnknownCommand",
     {"start", "a.lua"},
     "tbscripts: unknown command 'start'\nTry 'tbscripts --help'.\n"},
    {"UnknownCommandOfControlCharacters",
     {"\x1b[31m"},
     "tbscripts: unknown command '\\x1b[31m'\nTry 'tbscripts --help'.\n"},
    {"EmptyCommand", {""}, "tbscripts: unknown command ''\nTry 'tbscripts --help'.\n"},
    {"UnknownOption", {"--fast"}, "tbscripts: unknown option '--fast'\nTry 'tbscripts --help'.\n"},
    {"OptionOfTheToolBehindAnUnknownCommand",
     {"start", "--help"},
     "tbscripts: unknown command 'start'\nTry 'tbscripts --help'.\n"},
    {"TwoDashesInPlaceOfACommand",
     {"--", "run", "a.lua"},
     "tbscripts: unknown option '--'\nTry 'tbscripts --help'.\n"},
    {"VersionOfACommand",
     {"list", "--version"},
     "tbscripts: list: FILE is required\nTry 'tbscripts list --help'.\n"},
    {"UnknownOptionOfACommand",
     {"run", "--fast", "a.lua"},
     "tbscripts: run: The following argument was not expected: --fast\n"
     "Try 'tbscripts run --help'.\n"},
    {"RunWithoutFile", {"run"}, "tbscripts: run: FILE is required\nTry 'tbscripts run --help'.\n"},
    {"RunWithArgumentsOnly",
     {"run", "--", "a.lua"},
     "tbscripts: run: FILE is required\nTry 'tbscripts run --help'.\n"},
    {"CheckWithoutFile",
     {"check"},
     "tbscripts: check: FILE is required\nTry 'tbscripts check --help'.\n"},
    {"PackWithoutOutput",
     {"pack", "scripts"},
     "tbscripts: pack: --output is required\nTry 'tbscripts pack --help'.\n"},
    {"UnpackWithoutValueOfOutput",
     {"unpack", "a.tbscripts", "-o"},
     "tbscripts: unpack: --output: 1 required DIR missing\n"
     "Try 'tbscripts unpack --help'.\n"},
    {"ListOfTwoFiles",
     {"list", "a.lua", "b.lua"},
     "tbscripts: list: The following argument was not expected: b.lua\n"
     "Try 'tbscripts list --help'.\n"});

struct NameRow
{
    const char* row;
    std::vector<std::string> arguments; // behind "check"
    const char* errors;
};

using OddFileNameTest = OnRows<ToolFixture, NameRow>;

TEST_P(OddFileNameTest, IsTakenAsOneName)
{
    std::vector<std::string> arguments = {"check"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());

    const Outcome outcome = run(arguments);

    EXPECT_EQ(
        outcome,
        trouble(
            "tbscripts: " + std::string(GetParam().errors) + ": No such file or directory\n",
            "0 scripts checked, 1 problem with files\n"));
}

ROWS(
    OddFileNameTest,
    {"Brackets", {"[a,b]"}, "./[a,b]"},
    {"Braces", {"{}"}, "{}"},
    {"Percents", {"%%"}, "%%"},
    {"Pluses", {"++"}, "./++"},
    {"Command", {"run"}, "run"},
    {"Empty", {""}, "''"},
    {"Blank", {" "}, " "},
    {"OptionBehindTwoDashes", {"--", "-x.lua"}, "-x.lua"},
    {"HelpBehindTwoDashes", {"--", "--help"}, "--help"},
    {"ControlCharacters", {"a\n\x1b[2J.lua"}, "a\\n\\x1b[2J.lua"},
    {"BrokenEncoding", {"\xff.lua"}, "\\xff.lua"});

} // namespace

} // namespace tool::test
