// Scripts of a project's file.

#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbScripts/ProjectLoader.h>

#include <string>
#include <type_traits>
#include <utility>

namespace tbScripts::test
{

class ProjectLoaderTest : public LoadingFixture
{
protected:
    static ProjectLoadResult load(const std::string& path)
    {
        ProjectLoadQuery query;
        query.path = path;
        return ProjectLoader::load(query);
    }

    ProjectLoadResult loadDocument(const std::string& document) const
    {
        m_folder.write("project", document);
        return load("project");
    }

    static void save(const std::string& path)
    {
        ProjectSaveQuery query;
        query.path = path;
        ProjectLoader::save(query);
    }
};

TEST_F(ProjectLoaderTest, QueryAndResultAreEmptyAtFirst)
{
    const ProjectLoadQuery query;
    const ProjectLoadResult result;

    EXPECT_TRUE(query.path.empty());
    EXPECT_EQ(query.callback, nullptr);
    EXPECT_TRUE(result.scripts.empty());
}

TEST_F(ProjectLoaderTest, ResultIsCopiedAndMoved)
{
    static_assert(std::is_nothrow_move_constructible_v<ProjectLoadResult>);
    ProjectLoadResult result = loadDocument(R"({"scripts": [{"name": "a"}]})");

    ProjectLoadResult copy;
    copy = result;
    const ProjectLoadResult moved = std::move(result);

    EXPECT_THAT(namesOf(copy.scripts), ElementsAre("a"));
    EXPECT_THAT(namesOf(moved.scripts), ElementsAre("a"));
}

TEST_F(ProjectLoaderTest, ScriptsComeInTheOrderOfTheFileAndOtherMembersAreIgnored)
{
    const ProjectLoadResult result = loadDocument(
        R"({"version": 3, "scripts": [{"name": "c"}, {"name": "a"}, {"name": "b"}],
            "more": [{"name": "d"}]})");

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("c", "a", "b"));
    EXPECT_EQ(result.scripts[1], getScript("a"));
    EXPECT_EQ(countScripts(), 3U);
}

TEST_F(ProjectLoaderTest, ScriptsAreFilledAndCompiled)
{
    loadDocument(R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = 5"}]})");

    Script* const script = getScript("a");
    EXPECT_EQ(script->getTargetInterpreter(), 1U);
    EXPECT_EQ(script->getSources(), "x = 5");
    EXPECT_EQ(resultOf(*script), 5);
}

TEST_F(ProjectLoaderTest, ScriptThatDoesNotCompileIsLoadedAllTheSame)
{
    const ProjectLoadResult result = loadDocument(
        R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = = 1"}, {"name": "b"}]})");

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_EQ(getScript("a")->getLastCompilationResult().errorCode, 3U);
    expectLogged(
        "Error while compiling script 'a' : [string \"x = = 1\"]:1: unexpected symbol near '='",
        "LuaScript");
}

TEST_F(ProjectLoaderTest, ScriptWithoutInterpreterFailsToCompileSilently)
{
    loadDocument(R"({"scripts": [{"name": "a", "sources": "x = 1"}]})");

    EXPECT_EQ(getScript("a")->getLastCompilationResult().errorCode, 2U);
    EXPECT_EQ(
        getScript("a")->getLastCompilationResult().message,
        "Can't load if the InterpreterType has not been set.");
}

TEST_F(ProjectLoaderTest, UnknownTypeIsLoggedAndLoaded)
{
    const ProjectLoadResult result =
        loadDocument(R"({"scripts": [{"name": "a", "type": "LUA", "sources": "x = 1"}]})");

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a"));
    expectLogged("Script type requested unknown. This will disable the Script.", "Script");
}

TEST_F(ProjectLoaderTest, ElementsThatAreNoCompleteDeclarationsAreSkippedSilently)
{
    const ProjectLoadResult result = loadDocument(
        R"({"scripts": [5, {"name": "a"}, {}, null, {"name": 5}, [{"name": "c"}], "d",
                        {"name": "b"}, {"sources": "x = 1"}]})");

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("a", "b"));
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectLoaderTest, NameThatComesTwiceGivesOneScriptTwice)
{
    const ProjectLoadResult result = loadDocument(
        R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = 1"},
                        {"name": "a", "sources": "x = 2"}]})");

    ASSERT_EQ(result.scripts.size(), 2U);
    EXPECT_EQ(result.scripts[0], result.scripts[1]);
    EXPECT_EQ(resultOf(*getScript("a")), 2);
    EXPECT_EQ(countScripts(), 1U);
}

TEST_F(ProjectLoaderTest, ScriptsThatTheFileDoesNotMentionStay)
{
    Script* const script = addScript("other", "x = 7");

    loadDocument(R"({"scripts": [{"name": "a"}]})");

    EXPECT_EQ(getScript("other"), script);
    EXPECT_EQ(script->getSources(), "x = 7");
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectLoaderTest, LoadingAgainRefreshesTheSameObjects)
{
    const ProjectLoadResult first = loadDocument(
        R"({"scripts": [{"name": "a", "sources": "x = 1"}, {"name": "b", "sources": "x = 1"}]})");

    const ProjectLoadResult second = loadDocument(
        R"({"scripts": [{"name": "a", "type": "lua", "sources": "x = 2"},
                        {"name": "b", "type": "lua", "sources": "x = 3"}]})");

    ASSERT_EQ(second.scripts.size(), 2U);
    EXPECT_EQ(second.scripts[0], first.scripts[0]);
    EXPECT_EQ(second.scripts[1], first.scripts[1]);
    EXPECT_EQ(resultOf(*second.scripts[0]), 2);
    EXPECT_EQ(resultOf(*second.scripts[1]), 3);
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectLoaderTest, ScriptWithAnotherNameOfItsOwnIsFoundWhereItIsFiled)
{
    Script* const script = addScript("a", "x = 1");
    script->setName("b");

    const ProjectLoadResult result =
        loadDocument(R"({"scripts": [{"name": "a", "sources": "x = 2"}]})");

    ASSERT_EQ(result.scripts.size(), 1U);
    EXPECT_EQ(result.scripts[0], script);
    EXPECT_EQ(resultOf(*script), 2);
}

TEST_F(ProjectLoaderTest, PathIsThatOfTheFileItself)
{
    addScript("a", "x = 1");
    save("level.proj");

    EXPECT_TRUE(load("level.proj").scripts.empty());

    expectLogged(
        "Can't find Object Declaration file " + m_folder.pathOf("level.proj"),
        "ContentLoader::inputData");
    EXPECT_THAT(namesOf(load("level_scripts.tbscripts").scripts), ElementsAre("a"));
}

TEST_F(ProjectLoaderTest, AbsolutePathIsTakenAsItIs)
{
    const TemporaryFolder elsewhere;
    elsewhere.write("project", R"({"scripts": [{"name": "a"}]})");

    EXPECT_THAT(namesOf(load(elsewhere.pathOf("project")).scripts), ElementsAre("a"));
}

TEST_F(ProjectLoaderTest, FileThatIsNoDocumentIsLogged)
{
    const ProjectLoadResult result = loadDocument("{\"scripts\": [{\"name\": \"a\"}}");

    EXPECT_TRUE(result.scripts.empty());
    EXPECT_EQ(countScripts(), 0U);
    EXPECT_EQ(
        m_log.takeEntries(),
        parseError("line 1, column 27: syntax error", "{\"scripts\": [{\"name\": \"a\"}>>>}"));
}

TEST_F(ProjectLoaderTest, FileSavedWithoutScriptsGivesNone)
{
    save("level.proj");

    EXPECT_TRUE(load("level_scripts.tbscripts").scripts.empty());
    EXPECT_EQ(countScripts(), 0U);
}

namespace
{

struct OtherDocument
{
    const char* row;
    const char* text;
};

} // namespace

using ProjectLoaderOtherDocumentTest = OnRows<ProjectLoaderTest, OtherDocument>;

ROWS(
    ProjectLoaderOtherDocumentTest,
    {"EmptyObject", "{}"},
    {"EmptyList", R"({"scripts": []})"},
    {"DeclarationAtTheRoot", R"({"name": "a"})"},
    {"ArrayAtTheRoot", R"([{"name": "a"}])"},
    {"ListInAnArray", R"([{"scripts": [{"name": "a"}]}])"},
    {"TextAtTheRoot", R"("scripts")"},
    {"NullAtTheRoot", "null"},
    {"OtherLetters", R"({"Scripts": [{"name": "a"}]})"},
    {"ObjectOfScripts", R"({"scripts": {"name": "a"}})"},
    {"ObjectsOfScripts", R"({"scripts": {"a": {"name": "a"}}})"},
    {"TextAsScripts", R"({"scripts": "a"})"},
    {"NumberAsScripts", R"({"scripts": 1})"},
    {"NullAsScripts", R"({"scripts": null})"});

TEST_P(ProjectLoaderOtherDocumentTest, GivesNoScriptsAndSaysNothing)
{
    const ProjectLoadResult result = loadDocument(GetParam().text);

    EXPECT_TRUE(result.scripts.empty());
    EXPECT_EQ(countScripts(), 0U);
}

} // namespace tbScripts::test
