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

using test::operator<<;

} // namespace

class DeepSourceTest : public LogFixture, public ::testing::WithParamInterface<NestingRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Nestings,
    DeepSourceTest,
    ::testing::Values(
        NestingRow{"Parentheses", "return ", "("},
        NestingRow{"Tables", "return ", "{"},
        NestingRow{"Concatenations", "return 'a'", "..'a'"},
        NestingRow{"Operators", "return ", "not "},
        NestingRow{"Minuses", "return ", "- "},
        NestingRow{"Functions", "", "function f() "},
        NestingRow{"Blocks", "", "do "},
        NestingRow{"Calls", "f", "(f"},
        NestingRow{"Indices", "return a", "[a"}),
    RowName());

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
