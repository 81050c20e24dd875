#include "tbscripts/ScriptArguments.h"

#include "support/RowName.h"

#include <tbScripts/Environment.h>

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

using tbScripts::test::OnRows;

struct LiteralRow
{
    const char* row;
    std::string bytes;
    const char* literal;
};

using LiteralTest = OnRows<::testing::Test, LiteralRow>;

TEST_P(LiteralTest, StandsForItsBytes)
{
    EXPECT_EQ(literalOf(GetParam().bytes), GetParam().literal);
}

ROWS(
    LiteralTest,
    {"Empty", "", "\"\""},
    {"Plain", "a b'c", "\"a b'c\""},
    {"Quote", "a\"b", "\"a\\034b\""},
    {"Backslash", "\\n", "\"\\092n\""},
    {"LineFeedBeforeADigit", "\n1", "\"\\0101\""},
    {"Nul", std::string("\0", 1), "\"\\000\""},
    {"UpperByte", "\xff", "\"\\255\""});

TEST(ScriptArgumentsTest, FailWithoutAnInterpreter)
{
    tbScripts::Environment environment;

    EXPECT_FALSE(provideArguments(environment, "a.lua", {"x"}));
}

} // namespace

} // namespace tool::test
