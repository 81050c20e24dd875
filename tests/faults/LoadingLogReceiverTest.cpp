// The receiver of the log changes scripts and managers while they are being loaded.

#include "support/LoadingFixture.h"
#include "support/ReactingLogger.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/ProjectLoader.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace tbScripts::test
{

namespace
{

constexpr const char* NOT_CREATED = "Failed Script creation in Manager.";
constexpr const char* WRONG_TYPE = R"({"name": "a", "type": "wrong", "sources": "x = 1"})";
constexpr const char* WRONG_SOURCES = R"({"name": "a", "type": "lua", "sources": "x = = 1"})";

void eraseScript()
{
    ScriptManager::getInstance()->erase("a");
}

} // namespace

class LoadingLogReceiverTest : public LoadingFixture
{
protected:
    ProjectLoadResult loadProject(const std::string& declarations) const
    {
        m_folder.write("project", R"({"scripts": [)" + declarations + "]}");
        ProjectLoadQuery query;
        query.path = "project";
        return ProjectLoader::load(query);
    }
};

TEST_F(LoadingLogReceiverTest, MayEraseTheScriptOrKillTheManagerWhateverIsWrong)
{
    for (const char* declaration : {WRONG_TYPE, WRONG_SOURCES})
    {
        for (const bool isManagerKilled : {false, true})
        {
            SCOPED_TRACE(std::string(declaration) + (isManagerKilled ? ", killed" : ", erased"));
            const ReactingLogger logger(
                isManagerKilled ? &LoadingLogReceiverTest::killScripts : &eraseScript);

            const auto result = ContentLoader::processScriptSources(declaration, true);

            EXPECT_EQ(result.status, 2U);
            EXPECT_THAT(textsOf(result.errors), ElementsAre(NOT_CREATED));
            EXPECT_TRUE(result.objects.empty());
            EXPECT_EQ(ScriptManager::getInstanceIfExisting() == nullptr, isManagerKilled);
            EXPECT_EQ(getScript("a"), nullptr);
        }
    }
}

TEST_F(LoadingLogReceiverTest, MayEraseAScriptOfAnArray)
{
    const ReactingLogger logger(&eraseScript);

    const auto result = ContentLoader::processScriptSources(
        "[" + std::string(WRONG_SOURCES) + R"(, {"name": "b"}])", true);

    EXPECT_EQ(result.status, 1U);
    EXPECT_THAT(textsOf(result.errors), ElementsAre(NOT_CREATED));
    EXPECT_THAT(namesOf(result.objects), ElementsAre("b"));
}

TEST_F(LoadingLogReceiverTest, MayRenameTheScript)
{
    const ReactingLogger logger([] { ScriptManager::getInstance()->rename("a", "b"); });

    const auto result = ContentLoader::processScriptSources(WRONG_SOURCES, true);

    EXPECT_EQ(result.status, 0U);
    EXPECT_THAT(namesOf(result.objects), ElementsAre("b"));
}

TEST_F(LoadingLogReceiverTest, MayLoadTheScriptAgain)
{
    int depth = 0;
    ReactingLogger logger(
        [&depth]
        {
            if (++depth == 1)
                ContentLoader::processScriptSources(WRONG_SOURCES, true);
        });

    const auto result = ContentLoader::processScriptSources(WRONG_SOURCES, true);

    EXPECT_THAT(namesOf(result.objects), ElementsAre("a"));
    EXPECT_THAT(logger.takeEntries(), SizeIs(2));
}

TEST_F(LoadingLogReceiverTest, MayKillTheLogManagerWhileAParsingErrorIsTold)
{
    m_folder.write("file", "{");
    auto logger = std::make_unique<ReactingLogger>([] { LogManager::getInstance()->kill(); });

    const auto parsed = ContentLoader::inputData("file");

    EXPECT_EQ(parsed.getRoot(), nullptr);
    EXPECT_THAT(logger->takeEntries(), SizeIs(1));
}

TEST_F(LoadingLogReceiverTest, MayThrow)
{
    ReactingLogger logger([] { throw std::runtime_error("disk full"); });

    EXPECT_NO_THROW(ContentLoader::inputData("missing"));
    EXPECT_NO_THROW(ContentLoader::outputData("text", "missing/file"));
    EXPECT_NO_THROW(ContentLoader::processScriptSources("{", true));

    EXPECT_THAT(logger.takeEntries(), SizeIs(8));
}

TEST_F(LoadingLogReceiverTest, MayEraseAScriptOfAProjectWhileItIsFilledOrCompiled)
{
    const ReactingLogger logger(&eraseScript);

    for (const char* declaration : {WRONG_TYPE, WRONG_SOURCES})
    {
        const ProjectLoadResult result =
            loadProject(std::string(declaration) + R"(, {"name": "b", "type": "lua"})");

        EXPECT_THAT(namesOf(result.scripts), ElementsAre("b"));
        EXPECT_EQ(countScripts(), 1U);
    }
}

TEST_F(LoadingLogReceiverTest, MayKillTheScriptManagerOfAProject)
{
    const ReactingLogger logger(&LoadingLogReceiverTest::killScripts);

    const ProjectLoadResult result = loadProject(
        R"({"name": "b", "type": "lua"}, )" + std::string(WRONG_SOURCES) + R"(, {"name": "c"})");

    EXPECT_THAT(namesOf(result.scripts), ElementsAre("c"));
    EXPECT_EQ(countScripts(), 1U);
}

TEST_F(LoadingLogReceiverTest, MayGiveAwayAScriptOfAProject)
{
    addScript("kept", "");
    Script* given = nullptr;
    const ReactingLogger logger(
        [&given]
        {
            given = getScript("a");
            ScriptManager::getInstance()->rename("a", "kept");
        });

    const ProjectLoadResult result = loadProject(WRONG_SOURCES);

    const std::unique_ptr<Script> owned(given);
    ASSERT_EQ(result.scripts.size(), 1U);
    EXPECT_EQ(result.scripts[0], given);
}

TEST_F(LoadingLogReceiverTest, MayGiveAwayAScriptOfAProjectWhileItIsFilled)
{
    addScript("kept", "x = 7");
    std::unique_ptr<Script> given;
    const ReactingLogger logger(
        [&given]
        {
            given.reset(getScript("a"));
            ScriptManager::getInstance()->rename("a", "kept");
        });

    loadProject(WRONG_TYPE);

    EXPECT_EQ(given->getSources(), "x = 1");
    EXPECT_EQ(getScript("kept")->getSources(), "x = 7");
}

TEST_F(LoadingLogReceiverTest, MaySaveWhileAFileCannotBeSaved)
{
    int saved = 0;
    const ReactingLogger logger([&saved]
                                { saved += ContentLoader::outputData("text", "file") ? 1 : 0; });

    EXPECT_FALSE(ContentLoader::outputData("text", "missing/file"));

    EXPECT_EQ(saved, 1);
    EXPECT_EQ(m_folder.read("file"), "text");
}

} // namespace tbScripts::test
