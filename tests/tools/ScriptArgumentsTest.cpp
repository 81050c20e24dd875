#include "tbscripts/ScriptArguments.h"

#include "support/RowName.h"

#include <tbScripts/Environment.h>

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

struct LiteralRow
{
    const char* row;
    std::string bytes;
    const char* literal;
};

void PrintTo(const LiteralRow& row, std::ostream* stream)
{
    *stream << row.row;
}

class LiteralTest : public ::testing::TestWithParam<LiteralRow>
{
};

TEST_P(LiteralTest, StandsForItsBytes)
{
    EXPECT_EQ(literalOf(GetParam().bytes), GetParam().literal);
}

INSTANTIATE_TEST_SUITE_P(
    Bytes,
    LiteralTest,
    ::testing::Values(
        LiteralRow{"Empty", "", "\"\""},
        LiteralRow{"Plain", "a b'c", "\"a b'c\""},
        LiteralRow{"Quote", "a\"b", "\"a\\034b\""},
        LiteralRow{"Backslash", "\\n", "\"\\092n\""},
        LiteralRow{"LineFeedBeforeADigit", "\n1", "\"\\0101\""},
        LiteralRow{"Nul", std::string("\0", 1), "\"\\000\""},
        LiteralRow{"UpperByte", "\xff", "\"\\255\""}),
    tbScripts::test::RowName());

TEST(ScriptArgumentsTest, FailWithoutAnInterpreter)
{
    tbScripts::Environment environment;

    EXPECT_FALSE(provideArguments(environment, "a.lua", {"x"}));
}

} // namespace

} // namespace tool::test
