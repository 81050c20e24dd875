// The helpers of the loading tests see what they are to see.

#include "support/LoadingFixture.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <fstream>
#include <sys/stat.h>

namespace tbScripts::test
{

using tbResources::ResourceManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class TemporaryFolderTest : public ::testing::Test
{
protected:
    TemporaryFolder m_folder;
};

TEST_F(TemporaryFolderTest, IsEmptyAtFirstAndNobodyElses)
{
    const TemporaryFolder other;

    EXPECT_THAT(m_folder.list(), IsEmpty());
    EXPECT_NE(m_folder.pathOf("a"), other.pathOf("a"));
}

TEST_F(TemporaryFolderTest, ReadsBackAllBytes)
{
    m_folder.write("inner/file", std::string("a\0\xff\r\n", 5));

    EXPECT_EQ(m_folder.read("inner/file"), std::string("a\0\xff\r\n", 5));
    EXPECT_EQ(m_folder.read("file"), "<missing>");
    EXPECT_THAT(m_folder.list(), ElementsAre("inner"));
}

TEST_F(TemporaryFolderTest, GoesWithAllThatIsInIt)
{
    std::string path;

    {
        const TemporaryFolder folder;
        folder.write("locked/file", "text");
        path = folder.pathOf("locked");
        ::chmod(path.c_str(), 0);
    }

    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(TemporaryFolderTest, OrdinaryUserMayNotReadWhatIsForbidden)
{
    m_folder.write("secret", "text");
    ::chmod(m_folder.pathOf("secret").c_str(), 0);

    const OrdinaryUser user;

    EXPECT_FALSE(std::ifstream(m_folder.pathOf("secret")).is_open());
}

TEST_F(TemporaryFolderTest, OrdinaryUserMayWriteIntoIt)
{
    const OrdinaryUser user;

    m_folder.write("file", "text");

    EXPECT_EQ(m_folder.read("file"), "text");
}

class LoadingFixtureTest : public LoadingFixture
{
};

TEST_F(LoadingFixtureTest, WorkingPathIsTheFolder)
{
    const std::string path(std::string_view(ResourceManager::getInstance()->getWorkingPath()));

    EXPECT_EQ(path, m_folder.pathOf(""));
    EXPECT_EQ(path.back(), '/');
}

TEST_F(LoadingFixtureTest, MembersAreReadInTheirOrder)
{
    const auto parsed = parse(R"({"b": "1", "a": "2", "c": 3})");

    EXPECT_THAT(
        membersOf(parsed.getRoot()),
        ElementsAre(Pair("b", "1"), Pair("a", "2"), Pair("c", "<no text>")));
}

TEST_F(LoadingFixtureTest, ScriptGivesItsResult)
{
    Script* const script = addScript("a", "x = 7");

    EXPECT_EQ(resultOf(*script), -1);
    m_log.takeEntries();
    script->load();
    EXPECT_EQ(resultOf(*script), 7);
}

TEST_F(LoadingFixtureTest, KilledScriptsAreGone)
{
    addScript("a", "");

    killScripts();

    EXPECT_EQ(getScript("a"), nullptr);
    EXPECT_EQ(countScripts(), 0U);
}

} // namespace tbScripts::test
