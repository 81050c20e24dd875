// What is written to files.

#include "support/ChildProcess.h"
#include "support/LoadingFixture.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <fcntl.h>
#include <grp.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tbScripts::test
{

using tbMemory::StringView;
using tbResources::ResourceManager;

class ContentLoaderOutputTest : public LoadingFixture
{
protected:
    static std::vector<LogEntry> notOpened(const std::string& path)
    {
        return {{"Error when trying to open file saving : " + path, "ContentLoader"}};
    }

    // Paths for writing simply follow the working path, so that the root has to be in the middle.
    static bool writeAbsolute(const std::string& data, const std::string& path)
    {
        ResourceManager::getInstance()->setWorkingPath("");
        return ContentLoader::outputData(data, path);
    }

    unsigned int permissionsOf(const std::string& name) const
    {
        struct stat status = {};
        ::stat(m_folder.pathOf(name).c_str(), &status);
        return status.st_mode & 07777U;
    }

    gid_t groupOf(const std::string& name) const
    {
        struct stat status = {};
        ::stat(m_folder.pathOf(name).c_str(), &status);
        return status.st_gid;
    }

    void setPermissions(const std::string& name, mode_t permissions) const
    {
        ::chmod(m_folder.pathOf(name).c_str(), permissions);
    }

    void link(const std::string& target, const std::string& name) const
    {
        ASSERT_EQ(::symlink(target.c_str(), m_folder.pathOf(name).c_str()), 0);
    }
};

TEST_F(ContentLoaderOutputTest, DataBecomeAFileAndNothingElseAndReplaceItWhole)
{
    EXPECT_TRUE(ContentLoader::outputData("a longer text than the next one", "file"));
    EXPECT_EQ(m_folder.read("file"), "a longer text than the next one");
    EXPECT_TRUE(ContentLoader::outputData(StringView("textile", 4), StringView("filename", 4)));
    EXPECT_EQ(m_folder.read("file"), "text");
    EXPECT_TRUE(ContentLoader::outputData(StringView(), "file"));
    EXPECT_EQ(m_folder.read("file"), "");

    EXPECT_THAT(m_folder.list(), ElementsAre("file"));
}

TEST_F(ContentLoaderOutputTest, AllBytesAreWrittenAsTheyAre)
{
    std::string bytes;
    for (int i = 0; i < 1024 * 1024; ++i)
        bytes += static_cast<char>(i);

    EXPECT_TRUE(ContentLoader::outputData(bytes, "file"));

    EXPECT_EQ(m_folder.read("file"), bytes);
}

TEST_F(ContentLoaderOutputTest, EveryPathFollowsTheWorkingPathWithoutASlash)
{
    m_folder.write("inner/old", "");

    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf("half"));
    EXPECT_TRUE(ContentLoader::outputData("text", "AndHalf"));
    EXPECT_EQ(m_folder.read("halfAndHalf"), "text");
    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf("inner"));
    EXPECT_TRUE(ContentLoader::outputData("text", "/file"));
    EXPECT_EQ(m_folder.read("inner/file"), "text");
    EXPECT_TRUE(writeAbsolute("text", m_folder.pathOf("file"))); // there is none: the system's
    EXPECT_EQ(m_folder.read("file"), "text");
}

TEST_F(ContentLoaderOutputTest, AbsolutePathThatCannotBeWrittenIsLoggedWithThePathThatWasTried)
{
    const std::string path = m_folder.pathOf("file");

    EXPECT_FALSE(ContentLoader::outputData("text", path));

    expectLogged(
        {{"Error when trying to open file saving : " + path, "ContentLoader"},
         {"The path follows the working path, tried : " + m_folder.pathOf("") + path,
          "ContentLoader"}});
    EXPECT_THAT(m_folder.list(), IsEmpty());
}

TEST_F(ContentLoaderOutputTest, AbsolutePathThatWasTriedAsItIsIsLoggedOnce)
{
    const std::string path = m_folder.pathOf("missing/file");

    EXPECT_FALSE(writeAbsolute("text", path));

    expectLogged(notOpened(path));
}

TEST_F(ContentLoaderOutputTest, PathsThatCannotBeWrittenAreLoggedAsTheyAreGiven)
{
    m_folder.write("inner/file", "text");
    ASSERT_EQ(::mkfifo(m_folder.pathOf("pipe").c_str(), 0666), 0);
    link("missing/file", "link");
    link("itself", "itself");
    const std::string paths[] = {
        "missing/file",                 // no folder
        "inner",                        // a folder
        "",                             // the working path
        "file/",                        // a folder's name
        std::string("file\0.json", 10), // a NUL
        std::string(300, 'a'),          // too long for the system
        "pipe",                         // nobody reads it
        "link",                         // to nothing in a missing folder
        "itself"};                      // a link to itself

    for (const std::string& path : paths)
    {
        EXPECT_FALSE(ContentLoader::outputData("text", path)) << path;
        EXPECT_EQ(m_log.takeEntries(), notOpened(path));
    }

    EXPECT_THAT(m_folder.list(), ElementsAre("inner", "itself", "link", "pipe"));
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.pathOf("itself")));
    EXPECT_FALSE(writeAbsolute("text", ""));
    EXPECT_EQ(m_log.takeEntries(), notOpened(""));
}

TEST_F(ContentLoaderOutputTest, LongestNameOfTheSystemCanBeWritten)
{
    const std::string path(255, 'a');

    EXPECT_TRUE(ContentLoader::outputData("text", path));
    EXPECT_TRUE(ContentLoader::outputData("texts", path));

    EXPECT_EQ(m_folder.read(path), "texts");
}

TEST_F(ContentLoaderOutputTest, FileThatMayNotBeWrittenStays)
{
    m_folder.write("file", "text");
    setPermissions("file", 0444);

    {
        const OrdinaryUser user;
        EXPECT_FALSE(ContentLoader::outputData("texts", "file"));
    }

    EXPECT_EQ(m_log.takeEntries(), notOpened("file"));
    EXPECT_EQ(m_folder.read("file"), "text");
    EXPECT_THAT(m_folder.list(), ElementsAre("file"));
}

TEST_F(ContentLoaderOutputTest, FolderThatTakesNoNewFilesHasTheOldOnesWrittenInPlace)
{
    m_folder.write("locked/file", "a longer text than the new one");
    setPermissions("locked/file", 0666);
    setPermissions("locked", 0555);

    {
        const OrdinaryUser user;
        EXPECT_FALSE(ContentLoader::outputData("texts", "locked/other"));
        EXPECT_TRUE(ContentLoader::outputData("texts", "locked/file"));
    }

    EXPECT_EQ(m_log.takeEntries(), notOpened("locked/other"));
    EXPECT_EQ(m_folder.read("locked/file"), "texts");
}

// In such a folder, often that for temporary files, nobody replaces what belongs to others.
TEST_F(ContentLoaderOutputTest, FileOfSomebodyElseInAStickyFolderIsWrittenInPlace)
{
    if (::getuid() != 0)
        GTEST_SKIP() << "files of another owner take more rights";
    m_folder.write("shared/file", "a longer text than the new one");
    setPermissions("shared/file", 0666);
    setPermissions("shared", 01777);

    {
        const OrdinaryUser user;
        if (::access(m_folder.pathOf("shared/file").c_str(), W_OK) != 0)
            GTEST_SKIP() << "this system protects files in such folders";
        EXPECT_TRUE(ContentLoader::outputData("texts", "shared/file"));
    }

    EXPECT_EQ(m_folder.read("shared/file"), "texts");
    EXPECT_TRUE(std::filesystem::is_regular_file(m_folder.pathOf("shared/file")));
}

TEST_F(ContentLoaderOutputTest, PermissionsAreKept)
{
    m_folder.write("file", "text");
    setPermissions("file", 0640);

    EXPECT_TRUE(ContentLoader::outputData("texts", "file"));

    EXPECT_EQ(m_folder.read("file"), "texts");
    EXPECT_EQ(permissionsOf("file"), 0640U);
}

TEST_F(ContentLoaderOutputTest, GroupIsKeptWhereTheOwnerCannotBe)
{
    if (::getuid() != 0)
        GTEST_SKIP() << "files of another owner take more rights";
    m_folder.write("team/file", "text");
    ASSERT_EQ(::chown(m_folder.pathOf("team/file").c_str(), 4711, 4712), 0);
    setPermissions("team/file", 0664);
    setPermissions("team", 0777);
    ChildProcess member(
        []
        {
            const gid_t team = 4712;
            ::setgroups(1, &team);
            const OrdinaryUser user;
            return ContentLoader::outputData("texts", "team/file") ? 0 : 1;
        });

    EXPECT_EQ(member.wait(), 0);
    EXPECT_EQ(m_folder.read("team/file"), "texts");
    EXPECT_EQ(groupOf("team/file"), 4712U);
    EXPECT_EQ(permissionsOf("team/file"), 0664U);
}

TEST_F(ContentLoaderOutputTest, NewFileHasTheUsualPermissions)
{
    const mode_t mask = ::umask(027);

    ContentLoader::outputData("text", "file");

    ::umask(mask);
    EXPECT_EQ(permissionsOf("file"), 0640U);
}

TEST_F(ContentLoaderOutputTest, LinksAreFollowedAndStayLinks)
{
    const TemporaryFolder elsewhere;
    elsewhere.write("file", "text");
    m_folder.write("inner/file", "text");
    link("inner/file", "link");
    link("link", "linkToTheLink");
    link(elsewhere.pathOf("file"), "absolute");
    link("new", "toNothing");

    for (const char* path : {"linkToTheLink", "absolute", "toNothing"})
        EXPECT_TRUE(ContentLoader::outputData("texts", path)) << path;

    EXPECT_EQ(m_folder.read("inner/file"), "texts");
    EXPECT_EQ(elsewhere.read("file"), "texts");
    EXPECT_EQ(m_folder.read("new"), "texts");
    for (const char* path : {"link", "linkToTheLink", "absolute", "toNothing"})
        EXPECT_TRUE(std::filesystem::is_symlink(m_folder.pathOf(path))) << path;
}

TEST_F(ContentLoaderOutputTest, DevicesAreWrittenAndTheirFailuresNotReported)
{
    for (const char* device : {"/dev/null", "/dev/full"})
    {
        EXPECT_TRUE(writeAbsolute("text", device)) << device;
        EXPECT_TRUE(std::filesystem::is_character_file(device)) << device;
    }
}

TEST_F(ContentLoaderOutputTest, FifoWithAReaderIsWritten)
{
    ASSERT_EQ(::mkfifo(m_folder.pathOf("pipe").c_str(), 0666), 0);
    const int reader = ::open(m_folder.pathOf("pipe").c_str(), O_RDONLY | O_NONBLOCK);

    EXPECT_TRUE(ContentLoader::outputData("text", "pipe"));

    std::string received(10, '\0');
    received.resize(static_cast<std::size_t>(::read(reader, received.data(), received.size())));
    EXPECT_EQ(received, "text");
    EXPECT_TRUE(std::filesystem::is_fifo(m_folder.pathOf("pipe")));
    ::close(reader);
}

// What /dev/stdout leads to where the output goes into a pipe: a link to no path at all.
TEST_F(ContentLoaderOutputTest, PipeNamedByItsDescriptorIsWritten)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);

    EXPECT_TRUE(writeAbsolute("text", "/proc/self/fd/" + std::to_string(ends[1])));

    std::string received(10, '\0');
    received.resize(static_cast<std::size_t>(::read(ends[0], received.data(), received.size())));
    EXPECT_EQ(received, "text");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(ContentLoaderOutputTest, DeletedFileNamedByItsDescriptorIsWrittenInPlace)
{
    m_folder.write("file", "a longer text than the new one");
    const int file = ::open(m_folder.pathOf("file").c_str(), O_RDWR);
    ::unlink(m_folder.pathOf("file").c_str());

    EXPECT_TRUE(writeAbsolute("text", "/proc/self/fd/" + std::to_string(file)));

    std::string content(40, '\0');
    content.resize(static_cast<std::size_t>(::read(file, content.data(), content.size())));
    EXPECT_EQ(content, "text");
    EXPECT_THAT(m_folder.list(), IsEmpty());
    ::close(file);
}

TEST_F(ContentLoaderOutputTest, FileOfAnEarlierCrashIsNotInTheWay)
{
    const std::string process = std::to_string(::getpid());
    for (int i = 0; i < 1000; ++i)
        m_folder.write(".tbscripts-" + process + "-" + std::to_string(i) + ".tmp", "torn");

    EXPECT_TRUE(ContentLoader::outputData("text", "file"));

    EXPECT_EQ(m_folder.read("file"), "text");
    EXPECT_EQ(m_folder.list().size(), 1001U);
}

} // namespace tbScripts::test
