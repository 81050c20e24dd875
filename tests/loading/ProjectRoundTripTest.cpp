// What was saved is what is loaded.

#include "support/LoadingFixture.h"

#include <tbScripts/ProjectLoader.h>

#include <string>

namespace tbScripts::test
{

using tbMemory::StringView;

class ProjectRoundTripTest : public LoadingFixture
{
protected:
    // Saves all scripts, forgets them and loads them back.
    static ProjectLoadResult saveAndLoad()
    {
        ProjectSaveQuery saving;
        saving.path = "level.proj";
        ProjectLoader::save(saving);
        killScripts();
        ProjectLoadQuery loading;
        loading.path = "level_scripts.tbscripts";
        return ProjectLoader::load(loading);
    }

    // Saves and loads a script without interpreter, which may hold anything.
    static std::string sourcesAfterwards(const std::string& sources)
    {
        ScriptManager::getInstance()->createOrRetrieve("a")->setSources(sources);
        saveAndLoad();
        return std::string(std::string_view(getScript("a")->getSources()));
    }

    void TearDown() override
    {
        m_log.takeEntries(); // scripts without interpreter tell so when they are loaded
        LoadingFixture::TearDown();
    }
};

TEST_F(ProjectRoundTripTest, KeepsNameTypeAndSources)
{
    addScript("a", "x = 1");
    ScriptManager::getInstance()->createOrRetrieve("b")->setSources("anything");

    const ProjectLoadResult result = saveAndLoad();

    EXPECT_EQ(result.scripts.size(), 2U);
    EXPECT_EQ(resultOf(*getScript("a")), 1);
    EXPECT_EQ(getScript("b")->getSources(), "anything");
    EXPECT_EQ(getScript("b")->getTargetInterpreter(), 0U);
    EXPECT_EQ(countScripts(), 2U);
}

TEST_F(ProjectRoundTripTest, KeepsEveryByteOfTheSources)
{
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);

    EXPECT_EQ(sourcesAfterwards(bytes), bytes);
}

TEST_F(ProjectRoundTripTest, KeepsEveryPairOfBytes)
{
    std::string bytes;
    for (int i = 0; i < 256 * 256; ++i)
    {
        bytes += static_cast<char>(i / 256);
        bytes += static_cast<char>(i);
    }

    EXPECT_EQ(sourcesAfterwards(bytes), bytes);
}

TEST_F(ProjectRoundTripTest, KeepsNuls)
{
    EXPECT_EQ(sourcesAfterwards(std::string("\0a\0\0", 4)), std::string("\0a\0\0", 4));
}

TEST_F(ProjectRoundTripTest, KeepsTextsThatAreNoUtf8)
{
    const std::string broken = "\xC0\x80 \xED\xA0\x80 \xFF\xFE \xE2\x82 \xF5\x80\x80\x80 \x80";

    EXPECT_EQ(sourcesAfterwards(broken), broken);
}

TEST_F(ProjectRoundTripTest, KeepsWhatLooksLikeAnEscape)
{
    const std::string sources = R"(x = "\u0041\\\"" -- \ud800 \/ \n)";

    EXPECT_EQ(sourcesAfterwards(sources), sources);
}

TEST_F(ProjectRoundTripTest, KeepsLineEndings)
{
    EXPECT_EQ(sourcesAfterwards("a\r\nb\nc\r\r\n"), "a\r\nb\nc\r\r\n");
}

TEST_F(ProjectRoundTripTest, KeepsAByteOrderMark)
{
    EXPECT_EQ(sourcesAfterwards("\xEF\xBB\xBFx = 1"), "\xEF\xBB\xBFx = 1");
}

TEST_F(ProjectRoundTripTest, KeepsAMegabyte)
{
    std::string bytes;
    for (unsigned int i = 0; i < 1024 * 1024; ++i)
        bytes += static_cast<char>((i * 2654435761U) >> 13U);

    EXPECT_EQ(sourcesAfterwards(bytes), bytes);
}

TEST_F(ProjectRoundTripTest, KeepsNamesOfAnyBytes)
{
    const std::string name("\0\xff\n\"\\", 5);
    addScript(name, "x = 1");
    addScript("", "x = 2");

    saveAndLoad();

    EXPECT_EQ(countScripts(), 2U);
    EXPECT_EQ(resultOf(*getScript(name)), 1);
    EXPECT_EQ(resultOf(*getScript("")), 2);
}

TEST_F(ProjectRoundTripTest, KeepsTwoThousandScripts)
{
    for (int i = 0; i < 2000; ++i)
        addScript("script " + std::to_string(i), "x = " + std::to_string(i));

    const ProjectLoadResult result = saveAndLoad();

    EXPECT_EQ(result.scripts.size(), 2000U);
    for (int i = 0; i < 2000; ++i)
    {
        Script* const script = getScript("script " + std::to_string(i));
        ASSERT_NE(script, nullptr) << i;
        EXPECT_EQ(script->getSources(), StringView("x = " + std::to_string(i)));
        EXPECT_TRUE(script->getLastCompilationResult().success);
    }
}

} // namespace tbScripts::test
