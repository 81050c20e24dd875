#include "tbscripts/SourcePosition.h"

#include "support/RowName.h"

#include "tbscripts/Failure.h"

#include <tbScripts/Environment.h>

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;

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

using SourcePositionTest = OnRows<::testing::Test, SourceRow>;

// The interpreter itself is the witness: the message is the one that it gives for this source.
TEST_P(SourcePositionTest, IsDerivedFromTheSourceThatWasCompiled)
{
    tbScripts::Script script = scriptOf(GetParam().sources);

    const auto failure = compile(script);

    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->line, GetParam().line);
    EXPECT_EQ(failure->text, GetParam().text);
}

ROWS(
    SourcePositionTest,
    {"OneLine", "x = = 1", 1, "unexpected symbol near '='"},
    {"ThirdLine", "x = 1\ny = 2\nz = = 3\n", 3, "unexpected symbol near '='"},
    {"EmptyFirstLine", "\n\nz = = 3", 3, "unexpected symbol near '='"},
    {"CarriageReturns", "x = 1\r\nz = = 3\r\n", 2, "unexpected symbol near '='"},
    {"ByteOrderMark", "\xef\xbb\xbfx = 1\nz = = 3", 2, "unexpected symbol near '='"},
    {"HashLine", "#!/bin/x ]:9: y\nz = = 3", 2, "unexpected symbol near '='"},
    {"PlaceInAText", "x = [[\"]:7:]]\n\nz = = 3", 3, "unexpected symbol near '='"},
    {"PlaceAndMessageInAText", "x = [[\"]:7: bad]]\nz = = 3", 2, "unexpected symbol near '='"},
    {"PlaceInAComment", "--\"]:7: no...\"]:8: no\nz = = 3", 2, "unexpected symbol near '='"},
    {"EndsAtNul", std::string("x =\0 1", 6), 1, "unexpected symbol near '<eof>'"},
    {"BeginsWithEqualsSign", "=x]:7: y\nz", 1, "unexpected symbol near '='"},
    {"OnlyEqualsSign", "=", 1, "unexpected symbol near '='"},
    {"LongAfterEqualsSign", "=" + repeat("abcdefg ", 20), 1, "unexpected symbol near '='"},
    {"BeginsWithAtSign", "@x:7: y\nz", 1, "unexpected symbol near '@'"},
    {"ShortAfterAtSign", "@" + repeat("a", 59), 1, "unexpected symbol near '@'"},
    {"LongAfterAtSign", "@" + repeat("a", 60), 1, "unexpected symbol near '@'"},
    {"VeryLongAfterAtSign", "@" + repeat("a:7: b\n", 30), 1, "unexpected symbol near '@'"},
    {"Tab", "x\t= = 1", 1, "unexpected symbol near '='"},
    {"DeleteCharacter", "--\x7f\nx = = 1", 2, "unexpected symbol near '='"},
    {"UpperBytes", "--\xff\xc3\nx = = 1", 2, "unexpected symbol near '='"});

using FirstLineLengthTest = ::testing::TestWithParam<int>;

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

VALUES(FirstLineLengthTest, ::testing::Range(40, 66));

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

using UnplacedMessageTest = OnRows<::testing::Test, MessageRow>;

TEST_P(UnplacedMessageTest, StaysWhole)
{
    const PlacedMessage placed = placeMessage(GetParam().message, "x = 1");

    EXPECT_EQ(placed.line, 0);
    EXPECT_EQ(placed.text, GetParam().message);
}

ROWS(
    UnplacedMessageTest,
    {"Empty", ""},
    {"NoPlace", "boom"},
    {"OtherSource", "[string \"y = 1\"]:3: boom"},
    {"LongerSource", "[string \"x = 1...\"]:3: boom"},
    {"NoLine", "[string \"x = 1\"]: boom"},
    {"NoNumber", "[string \"x = 1\"]:three: boom"},
    {"LineNought", "[string \"x = 1\"]:0: boom"},
    {"NegativeLine", "[string \"x = 1\"]:-3: boom"},
    {"HugeLine", "[string \"x = 1\"]:99999999999: boom"},
    {"NoBlank", "[string \"x = 1\"]:3:boom"});

} // namespace

} // namespace tool::test
