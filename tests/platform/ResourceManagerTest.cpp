#include <tbResources/ResourceManager.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>

namespace
{

using tbMemory::Buffer;
using tbMemory::String;
using tbMemory::StringView;
using tbResources::ResourceManager;

class ResourceManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string folder =
            (std::filesystem::temp_directory_path() / "tobrel-resources-XXXXXX").string();
        ASSERT_NE(mkdtemp(folder.data()), nullptr);
        m_folder = folder;
    }

    void TearDown() override
    {
        ResourceManager::getInstance()->kill();
        std::filesystem::remove_all(m_folder);
    }

    std::string pathOf(const std::string& name) const { return (m_folder / name).string(); }

    std::string write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(pathOf(name), std::ios::binary) << bytes;
        return pathOf(name);
    }

    std::filesystem::path m_folder;
};

TEST_F(ResourceManagerTest, StartsInTheCurrentFolderWithASlashBehindIt)
{
    const String expected = std::filesystem::current_path().string() + "/";

    EXPECT_EQ(ResourceManager::getInstance()->getWorkingPath(), expected);
}

TEST_F(ResourceManagerTest, KeepsTheWorkingPathAsItIsGivenUntilItIsKilled)
{
    ResourceManager::getInstance()->setWorkingPath("some/../folder");
    EXPECT_EQ(ResourceManager::getInstance()->getWorkingPath(), "some/../folder");

    ResourceManager::getInstance()->kill();

    EXPECT_NE(ResourceManager::getInstance()->getWorkingPath(), "some/../folder");
}

TEST_F(ResourceManagerTest, JoinsRelativePathsToTheWorkingPathWithOneSlashAndLeavesAbsoluteOnes)
{
    ResourceManager* manager = ResourceManager::getInstance();

    for (const char* folder : {"/data", "/data/"})
    {
        manager->setWorkingPath(folder);
        EXPECT_EQ(manager->getAbsoluteFromWorkingDir("a/b.json"), "/data/a/b.json");
        EXPECT_EQ(manager->getAbsoluteFromWorkingDir("/etc/x"), "/etc/x");
    }
}

TEST_F(ResourceManagerTest, ReadsEveryByteOfAFile)
{
    std::string bytes("a\0\r\n\xff", 5);
    bytes += std::string(300'000, 'x'); // several reads
    const std::string path = write("file", bytes);

    const Buffer buffer = ResourceManager::getInstance()->loadFileIntoMemory(path);

    EXPECT_EQ(buffer, Buffer(bytes.data(), bytes.size()));
}

TEST_F(ResourceManagerTest, ReadsThroughALink)
{
    std::filesystem::create_symlink(write("file", "abc"), pathOf("link"));

    const Buffer buffer = ResourceManager::getInstance()->loadFileIntoMemory(pathOf("link"));

    EXPECT_EQ(buffer, Buffer("abc", 3));
}

TEST_F(ResourceManagerTest, ReadsAFileThatReportsNoSize)
{
    if (!std::filesystem::exists("/proc/self/status"))
        GTEST_SKIP() << "needs a process file system";

    EXPECT_FALSE(ResourceManager::getInstance()->loadFileIntoMemory("/proc/self/status").empty());
}

TEST_F(ResourceManagerTest, ReadsNothingFromAnEmptyFile)
{
    EXPECT_TRUE(ResourceManager::getInstance()->loadFileIntoMemory(write("file", "")).empty());
}

TEST_F(ResourceManagerTest, ReadsNothingFromWhatIsNoFile)
{
    ResourceManager* manager = ResourceManager::getInstance();
    ASSERT_EQ(mkfifo(pathOf("fifo").c_str(), 0600), 0);
    std::filesystem::create_symlink(pathOf("loop"), pathOf("loop"));

    EXPECT_TRUE(manager->loadFileIntoMemory(pathOf("missing")).empty());
    EXPECT_TRUE(manager->loadFileIntoMemory(m_folder.string()).empty());
    EXPECT_TRUE(manager->loadFileIntoMemory(pathOf("fifo")).empty());
    EXPECT_TRUE(manager->loadFileIntoMemory(pathOf("loop")).empty());
    EXPECT_TRUE(manager->loadFileIntoMemory("/dev/zero").empty());
    EXPECT_TRUE(manager->loadFileIntoMemory("").empty());
    EXPECT_TRUE(manager->loadFileIntoMemory(StringView()).empty());
    EXPECT_TRUE(manager->loadFileIntoMemory(std::string(100'000, 'a')).empty());
}

TEST_F(ResourceManagerTest, ReadsNothingFromAFileThatMayNotBeRead)
{
    const std::string path = write("file", "abc");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    if (std::ifstream(path).is_open())
        GTEST_SKIP() << "this user may read every file";

    EXPECT_TRUE(ResourceManager::getInstance()->loadFileIntoMemory(path).empty());
}

TEST_F(ResourceManagerTest, ZeroByteInAPathDoesNotShortenIt)
{
    const std::string path = write("file", "abc") + std::string("\0.txt", 5);

    EXPECT_TRUE(ResourceManager::getInstance()->loadFileIntoMemory(path).empty());
}

} // namespace
