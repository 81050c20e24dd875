// Sources that nest without end are syntax errors, on a small stack too.

#include "support/LogFixture.h"
#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "support/SmallStackThread.h"

#include <tbScripts/Script.h>

#include <cstddef>
#include <string>

namespace tbScripts::test
{

namespace
{

struct NestingRow
{
    const char* row;
    const char* begin;
    const char* repeated;
};

} // namespace

using DeepSourceTest = OnRows<LogFixture, NestingRow>;

ROWS(
    DeepSourceTest,
    {"Parentheses", "return ", "("},
    {"Tables", "return ", "{"},
    {"Concatenations", "return 'a'", "..'a'"},
    {"Operators", "return ", "not "},
    {"Minuses", "return ", "- "},
    {"Functions", "", "function f() "},
    {"Blocks", "", "do "},
    {"Calls", "f", "(f"},
    {"Indices", "return a", "[a"});

TEST_P(DeepSourceTest, IsASyntaxErrorOnASmallStack)
{
    std::string sources = GetParam().begin;
    for (int i = 0; i < 100000; ++i)
        sources += GetParam().repeated;
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    bool hasSucceeded = true;

    runOnStackOf(
        IS_SANITIZED ? std::size_t{2} << 20 : std::size_t{256} << 10,
        [&] { hasSucceeded = script.load(); });

    EXPECT_FALSE(hasSucceeded);
    EXPECT_EQ(script.getLastCompilationResult().errorCode, 3U);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

} // namespace tbScripts::test
