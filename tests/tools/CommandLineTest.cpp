#include "support/RowName.h"
#include "tools/ToolFixture.h"

namespace tool::test
{

namespace
{

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

void PrintTo(const HelpRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class HelpTest : public ToolFixture, public ::testing::WithParamInterface<HelpRow>
{
};

TEST_P(HelpTest, TeachesUsageExamplesAndExitStatus)
{
    const Outcome outcome = run(GetParam().arguments);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith(GetParam().beginning));
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().example));
    EXPECT_THAT(outcome.output, HasSubstr("\nExit status:"));
    EXPECT_EQ(outcome.errors, "");
}

INSTANTIATE_TEST_SUITE_P(
    Commands,
    HelpTest,
    ::testing::Values(
        HelpRow{
            "Overview",
            {"--help"},
            "Runs, checks and packs Lua scripts.\nUsage: tbscripts [OPTIONS] COMMAND\n",
            "\n  tbscripts check scripts/\n"},
        HelpRow{
            "OverviewByLetter",
            {"-h"},
            "Runs, checks and packs Lua scripts.\nUsage: tbscripts [OPTIONS] COMMAND\n",
            "\n  tbscripts check scripts/\n"},
        HelpRow{
            "Run",
            {"run", "--help"},
            "Runs scripts in one environment, in the order given.\n"
            "Usage: tbscripts run [OPTIONS] FILE...\n",
            "\n  tbscripts run hello.lua\n"},
        HelpRow{
            "Check",
            {"check", "--help"},
            "Compiles scripts and reports each one that fails. Runs nothing.\n"
            "Usage: tbscripts check [OPTIONS] FILE...\n",
            "\n  tbscripts check main.lua\n"},
        HelpRow{
            "Pack",
            {"pack", "--help"},
            "Packs all .lua files below a folder into a project's list.\n"
            "Usage: tbscripts pack [OPTIONS] DIR\n",
            "\n  tbscripts pack scripts/ -o game_scripts.tbscripts\n"},
        HelpRow{
            "Unpack",
            {"unpack", "-h"},
            "Writes the scripts of a document into files: the reverse of pack.\n"
            "Usage: tbscripts unpack [OPTIONS] FILE\n",
            "\n  tbscripts unpack game_scripts.tbscripts -o scripts/\n"},
        HelpRow{
            "List",
            {"list", "--help"},
            "Shows the scripts of a file.\nUsage: tbscripts list [OPTIONS] FILE\n",
            "\n  tbscripts list --json game_scripts.tbscripts\n"}),
    tbScripts::test::RowName());

struct RefusalRow
{
    const char* row;
    std::vector<std::string> arguments;
    const char* errors;
};

void PrintTo(const RefusalRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class RefusedCommandLineTest : public ToolFixture, public ::testing::WithParamInterface<RefusalRow>
{
};

TEST_P(RefusedCommandLineTest, SaysWhatIsWrongAndWhereToLook)
{
    const Outcome outcome = run(GetParam().arguments);

    EXPECT_EQ(outcome, trouble(GetParam().errors));
}

INSTANTIATE_TEST_SUITE_P(
    Mistakes,
    RefusedCommandLineTest,
    ::testing::Values(
        RefusalRow{
            "UnknownCommand",
            {"start", "a.lua"},
            "tbscripts: unknown command 'start'\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "UnknownCommandOfControlCharacters",
            {"\x1b[31m"},
            "tbscripts: unknown command '\\x1b[31m'\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "EmptyCommand", {""}, "tbscripts: unknown command ''\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "UnknownOption",
            {"--fast"},
            "tbscripts: unknown option '--fast'\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "OptionOfTheToolBehindAnUnknownCommand",
            {"start", "--help"},
            "tbscripts: unknown command 'start'\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "TwoDashesInPlaceOfACommand",
            {"--", "run", "a.lua"},
            "tbscripts: unknown option '--'\nTry 'tbscripts --help'.\n"},
        RefusalRow{
            "VersionOfACommand",
            {"list", "--version"},
            "tbscripts: list: FILE is required\nTry 'tbscripts list --help'.\n"},
        RefusalRow{
            "UnknownOptionOfACommand",
            {"run", "--fast", "a.lua"},
            "tbscripts: run: The following argument was not expected: --fast\n"
            "Try 'tbscripts run --help'.\n"},
        RefusalRow{
            "RunWithoutFile",
            {"run"},
            "tbscripts: run: FILE is required\nTry 'tbscripts run --help'.\n"},
        RefusalRow{
            "RunWithArgumentsOnly",
            {"run", "--", "a.lua"},
            "tbscripts: run: FILE is required\nTry 'tbscripts run --help'.\n"},
        RefusalRow{
            "CheckWithoutFile",
            {"check"},
            "tbscripts: check: FILE is required\nTry 'tbscripts check --help'.\n"},
        RefusalRow{
            "PackWithoutOutput",
            {"pack", "scripts"},
            "tbscripts: pack: --output is required\nTry 'tbscripts pack --help'.\n"},
        RefusalRow{
            "UnpackWithoutValueOfOutput",
            {"unpack", "a.tbscripts", "-o"},
            "tbscripts: unpack: --output: 1 required DIR missing\n"
            "Try 'tbscripts unpack --help'.\n"},
        RefusalRow{
            "ListOfTwoFiles",
            {"list", "a.lua", "b.lua"},
            "tbscripts: list: The following argument was not expected: b.lua\n"
            "Try 'tbscripts list --help'.\n"}),
    tbScripts::test::RowName());

struct NameRow
{
    const char* row;
    std::vector<std::string> arguments; // behind "check"
    const char* errors;
};

void PrintTo(const NameRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class OddFileNameTest : public ToolFixture, public ::testing::WithParamInterface<NameRow>
{
};

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

INSTANTIATE_TEST_SUITE_P(
    Names,
    OddFileNameTest,
    ::testing::Values(
        NameRow{"Brackets", {"[a,b]"}, "./[a,b]"},
        NameRow{"Braces", {"{}"}, "{}"},
        NameRow{"Percents", {"%%"}, "%%"},
        NameRow{"Pluses", {"++"}, "./++"},
        NameRow{"Command", {"run"}, "run"},
        NameRow{"Empty", {""}, "''"},
        NameRow{"Blank", {" "}, " "},
        NameRow{"OptionBehindTwoDashes", {"--", "-x.lua"}, "-x.lua"},
        NameRow{"HelpBehindTwoDashes", {"--", "--help"}, "--help"},
        NameRow{"ControlCharacters", {"a\n\x1b[2J.lua"}, "a\\n\\x1b[2J.lua"},
        NameRow{"BrokenEncoding", {"\xff.lua"}, "\\xff.lua"}),
    tbScripts::test::RowName());

} // namespace

} // namespace tool::test
