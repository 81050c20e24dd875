// Declarations of scripts in files.

#include "support/LoadingFixture.h"

#include <tbScripts/ContentLoader.h>

#include <string>

namespace tbScripts::test
{

using ::testing::ElementsAre;

using Result = ContentLoadResult<Script>;

class ScriptDeclarationFileTest : public LoadingFixture
{
protected:
    static void expectParsingError(const Result& result)
    {
        EXPECT_EQ(result.status, 2U);
        EXPECT_THAT(
            textsOf(result.errors), ElementsAre("Script Declaration import error. Parsing error."));
        EXPECT_TRUE(result.objects.empty());
    }
};

TEST_F(ScriptDeclarationFileTest, ScriptIsLoadedAndCompiled)
{
    m_folder.write("file", R"({"name": "a", "type": "lua", "sources": "x = 1"})");

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

TEST_F(ScriptDeclarationFileTest, ScriptIsCompiledWhateverIsAskedFor)
{
    m_folder.write("file", R"({"name": "a", "type": "lua", "sources": "x = 1"})");

    ContentLoader::loadScriptDeclaration("file", false);

    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

TEST_F(ScriptDeclarationFileTest, ArrayIsLoadedAndCompiled)
{
    m_folder.write(
        "file",
        R"([{"name": "a", "type": "lua", "sources": "x = 1"}, {},
            {"name": "b", "type": "lua", "sources": "x = 2"}])");

    const Result result = ContentLoader::loadScriptDeclaration("file", false);

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("a", "b"));
    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(resultOf(*getScript("b")), 2);
}

TEST_F(ScriptDeclarationFileTest, FileThatIsMissingIsAParsingErrorOfNothing)
{
    const Result result = ContentLoader::loadScriptDeclaration("missing", true);

    expectParsingError(result);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: incomplete JSON", ">>>"));
}

TEST_F(ScriptDeclarationFileTest, FileThatIsNoDocumentIsAParsingError)
{
    m_folder.write("file", "x = 1\n");

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    expectParsingError(result);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: syntax error", ">>>x = 1"));
}

TEST_F(ScriptDeclarationFileTest, LoadingAgainUpdatesTheScriptInPlace)
{
    m_folder.write("file", R"({"name": "a", "type": "lua", "sources": "x = 1"})");
    ContentLoader::loadScriptDeclaration("file", true);
    Script* const script = getScript("a");
    m_folder.write("file", R"({"name": "a", "type": "lua", "sources": "x = 2"})");

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    EXPECT_EQ(result.objects[0], script);
    EXPECT_EQ(resultOf(*script), 2);
    EXPECT_EQ(countScripts(), 1U);
}

TEST_F(ScriptDeclarationFileTest, FailedLoadingLeavesTheScriptsThatThereAre)
{
    Script* const script = addScript("a", "x = 1");
    script->load();
    m_folder.write("file", R"({"name": "a", "sources")");

    ContentLoader::loadScriptDeclaration("file", true);

    m_log.takeEntries();
    EXPECT_EQ(getScript("a"), script);
    EXPECT_EQ(resultOf(*script), 1);
}

TEST_F(ScriptDeclarationFileTest, SavedScriptIsLoadedBackByteForByte)
{
    std::string bytes;
    for (int i = 0; i < 512; ++i)
        bytes += static_cast<char>(i);
    ContentLoader::saveObjectDeclaration(addScript(bytes, bytes), "file");
    killScripts();

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    m_log.takeEntries(); // it does not compile
    ASSERT_EQ(result.objects.size(), 1U);
    EXPECT_EQ(std::string_view(result.objects[0]->getName()), bytes);
    EXPECT_EQ(std::string_view(result.objects[0]->getSources()), bytes);
    EXPECT_EQ(getScript(bytes), result.objects[0]);
}

TEST_F(ScriptDeclarationFileTest, MembersOfAnotherTypeAreIgnored)
{
    addScript("a", "x = 1");
    m_folder.write("file", R"({"name": "a", "type": 1, "sources": ["x = 2"]})");

    const Result result = ContentLoader::loadScriptDeclaration("file", true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_EQ(resultOf(*getScript("a")), 1);
}

} // namespace tbScripts::test
