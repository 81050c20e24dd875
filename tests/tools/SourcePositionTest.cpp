#include "tbscripts/SourcePosition.h"

#include "support/RowName.h"

#include "tbscripts/Failure.h"

#include <tbScripts/Environment.h>

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

tbScripts::Script scriptOf(const std::string& sources)
{
    tbScripts::Script script;
    script.setName("probe");
    script.setTargetInterpreter(tbScripts::INTERPRETER_LUA);
    script.setSources(sources);
    return script;
}

std::string repeat(const char* text, std::size_t times)
{
    std::string result;
    for (std::size_t i = 0; i < times; ++i)
        result += text;
    return result;
}

struct SourceRow
{
    std::string row;
    std::string sources;
    int line;
    const char* text;
};

void PrintTo(const SourceRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class SourcePositionTest : public ::testing::TestWithParam<SourceRow>
{
};

// The interpreter itself is the witness: the message is the one that it gives for this source.
TEST_P(SourcePositionTest, IsDerivedFromTheSourceThatWasCompiled)
{
    tbScripts::Script script = scriptOf(GetParam().sources);

    const auto failure = compile(script);

    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->line, GetParam().line);
    EXPECT_EQ(failure->text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Sources,
    SourcePositionTest,
    ::testing::Values(
        SourceRow{"OneLine", "x = = 1", 1, "unexpected symbol near '='"},
        SourceRow{"ThirdLine", "x = 1\ny = 2\nz = = 3\n", 3, "unexpected symbol near '='"},
        SourceRow{"EmptyFirstLine", "\n\nz = = 3", 3, "unexpected symbol near '='"},
        SourceRow{"CarriageReturns", "x = 1\r\nz = = 3\r\n", 2, "unexpected symbol near '='"},
        SourceRow{"ByteOrderMark", "\xef\xbb\xbfx = 1\nz = = 3", 2, "unexpected symbol near '='"},
        SourceRow{"HashLine", "#!/bin/x ]:9: y\nz = = 3", 2, "unexpected symbol near '='"},
        SourceRow{"PlaceInAText", "x = [[\"]:7:]]\n\nz = = 3", 3, "unexpected symbol near '='"},
        SourceRow{
            "PlaceAndMessageInAText",
            "x = [[\"]:7: bad]]\nz = = 3",
            2,
            "unexpected symbol near '='"},
        SourceRow{
            "PlaceInAComment", "--\"]:7: no...\"]:8: no\nz = = 3", 2, "unexpected symbol near '='"},
        SourceRow{"EndsAtNul", std::string("x =\0 1", 6), 1, "unexpected symbol near '<eof>'"},
        SourceRow{"BeginsWithEqualsSign", "=x]:7: y\nz", 1, "unexpected symbol near '='"},
        SourceRow{"OnlyEqualsSign", "=", 1, "unexpected symbol near '='"},
        SourceRow{
            "LongAfterEqualsSign", "=" + repeat("abcdefg ", 20), 1, "unexpected symbol near '='"},
        SourceRow{"BeginsWithAtSign", "@x:7: y\nz", 1, "unexpected symbol near '@'"},
        SourceRow{"ShortAfterAtSign", "@" + repeat("a", 59), 1, "unexpected symbol near '@'"},
        SourceRow{"LongAfterAtSign", "@" + repeat("a", 60), 1, "unexpected symbol near '@'"},
        SourceRow{
            "VeryLongAfterAtSign", "@" + repeat("a:7: b\n", 30), 1, "unexpected symbol near '@'"},
        SourceRow{"Tab", "x\t= = 1", 1, "unexpected symbol near '='"},
        SourceRow{"DeleteCharacter", "--\x7f\nx = = 1", 2, "unexpected symbol near '='"},
        SourceRow{"UpperBytes", "--\xff\xc3\nx = = 1", 2, "unexpected symbol near '='"}),
    tbScripts::test::RowName());

class FirstLineLengthTest : public ::testing::TestWithParam<int>
{
};

TEST_P(FirstLineLengthTest, DoesNotMatterWithoutASecondLine)
{
    const std::string sources = "x = = " + repeat("y", static_cast<std::size_t>(GetParam()) - 6);
    tbScripts::Script script = scriptOf(sources);

    const auto failure = compile(script);

    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->line, 1);
    EXPECT_EQ(failure->text, "unexpected symbol near '='");
}

TEST_P(FirstLineLengthTest, DoesNotMatterWithASecondLine)
{
    const std::string sources =
        "--" + repeat("y", static_cast<std::size_t>(GetParam()) - 2) + "\nx = = 1";
    tbScripts::Script script = scriptOf(sources);

    const auto failure = compile(script);

    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->line, 2);
    EXPECT_EQ(failure->text, "unexpected symbol near '='");
}

INSTANTIATE_TEST_SUITE_P(
    AroundTheLimits,
    FirstLineLengthTest,
    ::testing::Range(40, 66),
    ::testing::PrintToStringParamName());

TEST(RuntimePositionTest, IsDerivedInTheSameWay)
{
    const std::string sources = "x = [[\"]:7:]]\n\nerror('boom')";
    tbScripts::Script script = scriptOf(sources);
    script.load();
    tbScripts::Environment environment;
    environment.setEnvironmentFor(tbScripts::INTERPRETER_LUA);

    environment.execute(script);

    const std::string message(environment.getLastExecutionResult().message);
    const PlacedMessage placed =
        placeMessage(reasonIn(message, "Error while executing script '", "probe"), sources);
    EXPECT_EQ(placed.line, 3);
    EXPECT_EQ(placed.text, "boom");
}

struct MessageRow
{
    const char* row;
    const char* message;
};

void PrintTo(const MessageRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class UnplacedMessageTest : public ::testing::TestWithParam<MessageRow>
{
};

TEST_P(UnplacedMessageTest, StaysWhole)
{
    const PlacedMessage placed = placeMessage(GetParam().message, "x = 1");

    EXPECT_EQ(placed.line, 0);
    EXPECT_EQ(placed.text, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Messages,
    UnplacedMessageTest,
    ::testing::Values(
        MessageRow{"Empty", ""},
        MessageRow{"NoPlace", "boom"},
        MessageRow{"OtherSource", "[string \"y = 1\"]:3: boom"},
        MessageRow{"LongerSource", "[string \"x = 1...\"]:3: boom"},
        MessageRow{"NoLine", "[string \"x = 1\"]: boom"},
        MessageRow{"NoNumber", "[string \"x = 1\"]:three: boom"},
        MessageRow{"LineNought", "[string \"x = 1\"]:0: boom"},
        MessageRow{"NegativeLine", "[string \"x = 1\"]:-3: boom"},
        MessageRow{"HugeLine", "[string \"x = 1\"]:99999999999: boom"},
        MessageRow{"NoBlank", "[string \"x = 1\"]:3:boom"}),
    tbScripts::test::RowName());

} // namespace

} // namespace tool::test
