// Documents with several declarations.

#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbScripts/ContentLoader.h>

#include <ostream>
#include <string>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Result = ContentLoadResult<Script>;

class ContentLoaderArrayTest : public LoadingFixture
{
protected:
    static Result process(const std::string& text, bool compile = false)
    {
        return ContentLoader::processScriptSources(text, compile);
    }
};

TEST_F(ContentLoaderArrayTest, EmptyArrayIsASuccess)
{
    const Result result = process("[]");

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_TRUE(result.objects.empty());
}

TEST_F(ContentLoaderArrayTest, ScriptsComeInTheOrderOfTheDocument)
{
    const Result result = process(R"([{"name": "c"}, {"name": "a"}, {"name": "b"}])");

    EXPECT_EQ(result.status, 0U);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_THAT(namesOf(result.objects), ElementsAre("c", "a", "b"));
    EXPECT_EQ(countScripts(), 3U);
}

TEST_F(ContentLoaderArrayTest, ElementThatFailsDoesNotStopTheOthers)
{
    const Result result = process(R"([{"name": "a"}, {"type": "lua"}, {"name": "c"}])");

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(
        textsOf(result.errors),
        ElementsAre("Script Declaration entry incomplete. There is no name field."));
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "c"));
}

TEST_F(ContentLoaderArrayTest, StatusStaysPartialAfterASuccess)
{
    const Result result = process(R"([5, {"name": "a"}])");

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
}

TEST_F(ContentLoaderArrayTest, ErrorsComeInTheOrderOfTheElements)
{
    const Result result = process(R"([{}, {"name": "a"}, 5, {"name": 5}])");

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(
        textsOf(result.errors),
        ElementsAre(
            "Script Declaration entry incomplete. There is no name field.",
            "Script Declaration entry not an object.",
            "Script Declaration entry incomplete. There is no name field."));
}

TEST_F(ContentLoaderArrayTest, OnlyFailuresAreStillPartial)
{
    const Result result = process("[1]");

    EXPECT_EQ(result.status, 1U);
    EXPECT_TRUE(result.objects.empty());
    EXPECT_EQ(countScripts(), 0U);
}

TEST_F(ContentLoaderArrayTest, ElementsAreCompiledIfAskedFor)
{
    process(
        R"([{"name": "a", "type": "lua", "sources": "x = 1"},
            {"name": "b", "type": "lua", "sources": "x = 2"}])",
        true);

    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(resultOf(*getScript("b")), 2);
}

TEST_F(ContentLoaderArrayTest, ElementsAreNotCompiledOtherwise)
{
    process(R"([{"name": "a", "type": "lua", "sources": "x = = 1"}])", false);

    EXPECT_TRUE(getScript("a")->getLastCompilationResult().success);
}

TEST_F(ContentLoaderArrayTest, ScriptThatDoesNotCompileIsNoFailure)
{
    const Result result =
        process(R"([{"name": "a", "type": "lua", "sources": "x = = 1"}, {"name": "b"}])", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "b"));
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while compiling script 'a' : [string \"x = = 1\"]:1: unexpected symbol near '='",
            "LuaScript"}));
}

TEST_F(ContentLoaderArrayTest, NameThatComesTwiceGivesOneScriptWithTheLastSources)
{
    const Result result =
        process(R"([{"name": "a", "sources": "x = 1"}, {"name": "a", "sources": "x = 2"}])");

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "a"));
    EXPECT_EQ(countScripts(), 1U);
    EXPECT_EQ(getScript("a")->getSources(), "x = 2");
}

TEST_F(ContentLoaderArrayTest, ScriptsBeforeASyntaxErrorAreNotMade)
{
    const Result result = process("[{\"name\": \"a\"},\n 5 5]");

    EXPECT_EQ(result.status, 2U);
    EXPECT_EQ(countScripts(), 0U);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 2, column 4: syntax error", " 5 >>>5]"));
}

namespace
{

struct WrongElement
{
    const char* row;
    const char* text;
};

std::ostream& operator<<(std::ostream& stream, const WrongElement& element)
{
    return stream << element.text;
}

} // namespace

class ContentLoaderWrongElementTest : public LoadingFixture,
                                      public ::testing::WithParamInterface<WrongElement>
{
};

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    ContentLoaderWrongElementTest,
    ::testing::Values(
        WrongElement{"Number", "5"},
        WrongElement{"Text", R"("name")"},
        WrongElement{"Bool", "false"},
        WrongElement{"Null", "null"},
        WrongElement{"Array", R"([{"name": "a"}])"}),
    RowName());

TEST_P(ContentLoaderWrongElementTest, IsNoObject)
{
    const std::string text = "[" + std::string(GetParam().text) + "]";

    const Result result = ContentLoader::processScriptSources(text, true);

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(textsOf(result.errors), ElementsAre("Script Declaration entry not an object."));
    EXPECT_TRUE(result.objects.empty());
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test
