// What is read from files.

#include "support/LoadingFixture.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <string>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tbScripts::test
{

using tbMemory::StringView;
using tbResources::ResourceManager;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class ContentLoaderFilesTest : public LoadingFixture
{
protected:
    // What is logged of a file that is called `name` in the folder.
    std::vector<LogEntry> missing(const std::string& name) const
    {
        return {
            {"Can't find Object Declaration file " + m_folder.pathOf(name),
             "ContentLoader::inputData"}};
    }

    static Members readMembers(const std::string& path)
    {
        return membersOf(ContentLoader::inputData(path).getRoot());
    }

    static std::string readText(const StringView& path)
    {
        return std::string(std::string_view(ContentLoader::inputDataStr(path)));
    }
};

TEST_F(ContentLoaderFilesTest, DocumentIsReadIntoATree)
{
    m_folder.write("file.json", R"({"b": "1", "a": "2"})");

    EXPECT_THAT(readMembers("file.json"), ElementsAre(Pair("b", "1"), Pair("a", "2")));
}

TEST_F(ContentLoaderFilesTest, RelativePathStartsFromTheWorkingPath)
{
    m_folder.write("inner/file.json", R"({"a": "1"})");

    EXPECT_THAT(readMembers("inner/file.json"), ElementsAre(Pair("a", "1")));
    EXPECT_EQ(readText("inner/../inner/file.json"), R"({"a": "1"})");
}

TEST_F(ContentLoaderFilesTest, AbsolutePathIsTakenAsItIs)
{
    const TemporaryFolder elsewhere;
    elsewhere.write("file.json", R"({"a": "1"})");

    EXPECT_THAT(readMembers(elsewhere.pathOf("file.json")), ElementsAre(Pair("a", "1")));
    EXPECT_EQ(readText(elsewhere.pathOf("file.json")), R"({"a": "1"})");
}

TEST_F(ContentLoaderFilesTest, WorkingPathIsJoinedWithASlashForReading)
{
    m_folder.write("inner/file.json", R"({"a": "1"})");
    ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf("inner"));

    EXPECT_THAT(readMembers("file.json"), ElementsAre(Pair("a", "1")));
}

TEST_F(ContentLoaderFilesTest, FileThatIsMissingIsLoggedWithItsWholePath)
{
    const auto parsed = ContentLoader::inputData("inner/file.json");

    EXPECT_EQ(parsed.getRoot(), nullptr);
    EXPECT_FALSE(parsed.hasFailed());
    EXPECT_EQ(m_log.takeEntries(), missing("inner/file.json"));
}

TEST_F(ContentLoaderFilesTest, EmptyPathIsMissing)
{
    EXPECT_EQ(ContentLoader::inputData("").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing(""));
}

TEST_F(ContentLoaderFilesTest, DirectoryIsMissing)
{
    m_folder.write("inner/file.json", "{}");

    EXPECT_EQ(ContentLoader::inputData("inner").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("inner"));
    EXPECT_EQ(readText("inner"), "");
}

TEST_F(ContentLoaderFilesTest, FifoWithoutWriterIsMissingAndNotWaitedFor)
{
    ASSERT_EQ(::mkfifo(m_folder.pathOf("pipe").c_str(), 0666), 0);

    EXPECT_EQ(ContentLoader::inputData("pipe").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("pipe"));
    EXPECT_EQ(readText("pipe"), "");
}

// Between two looks at a path it may come to lead elsewhere.
TEST_F(ContentLoaderFilesTest, DocumentIsOpenedOnce)
{
    m_folder.write("file.json", R"({"a": "1"})");
    const int watch = ::inotify_init1(IN_NONBLOCK);
    ASSERT_GE(
        ::inotify_add_watch(watch, m_folder.pathOf("file.json").c_str(), IN_OPEN | IN_CLOSE), 0);

    EXPECT_THAT(readMembers("file.json"), ElementsAre(Pair("a", "1")));

    constexpr std::size_t OPENED_AND_CLOSED = 2;
    std::string events(64 * sizeof(inotify_event), '\0');
    EXPECT_EQ(
        ::read(watch, events.data(), events.size()), OPENED_AND_CLOSED * sizeof(inotify_event));
    ::close(watch);
}

TEST_F(ContentLoaderFilesTest, DeviceIsMissing)
{
    EXPECT_EQ(ContentLoader::inputData("/dev/zero").getRoot(), nullptr);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(
            LogEntry{"Can't find Object Declaration file /dev/zero", "ContentLoader::inputData"}));
    EXPECT_EQ(readText("/dev/zero"), "");
}

TEST_F(ContentLoaderFilesTest, SocketIsMissing)
{
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_folder.pathOf("socket").copy(address.sun_path, sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);

    EXPECT_EQ(ContentLoader::inputData("socket").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("socket"));
    EXPECT_EQ(readText("socket"), "");
    ::close(descriptor);
}

TEST_F(ContentLoaderFilesTest, FileThatMayNotBeReadIsMissing)
{
    m_folder.write("secret", R"({"a": "1"})");
    ::chmod(m_folder.pathOf("secret").c_str(), 0);

    const OrdinaryUser user;

    EXPECT_EQ(ContentLoader::inputData("secret").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("secret"));
    EXPECT_EQ(readText("secret"), "");
}

TEST_F(ContentLoaderFilesTest, FileInAFolderThatMayNotBeEnteredIsMissing)
{
    m_folder.write("locked/file.json", R"({"a": "1"})");
    ::chmod(m_folder.pathOf("locked").c_str(), 0);

    const OrdinaryUser user;

    EXPECT_EQ(ContentLoader::inputData("locked/file.json").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("locked/file.json"));
}

TEST_F(ContentLoaderFilesTest, PathWithANulIsMissing)
{
    m_folder.write("file", R"({"a": "1"})");
    const std::string path("file\0.json", 10);

    EXPECT_EQ(ContentLoader::inputData(path).getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing(path));
    EXPECT_EQ(readText(path), "");
}

TEST_F(ContentLoaderFilesTest, PathTooLongForTheSystemIsMissing)
{
    const std::string path(100000, 'a');

    EXPECT_EQ(ContentLoader::inputData(path).getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing(path));
    EXPECT_EQ(readText(path), "");
}

TEST_F(ContentLoaderFilesTest, EmptyFileIsNoDocument)
{
    m_folder.write("file.json", "");

    EXPECT_EQ(ContentLoader::inputData("file.json").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 1, column 1: incomplete JSON", ">>>"));
}

TEST_F(ContentLoaderFilesTest, FileThatIsNoDocumentIsLoggedAsAText)
{
    m_folder.write("file.json", "{\n\"a\"\n}");

    EXPECT_EQ(ContentLoader::inputData("file.json").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), parseError("line 3, column 1: syntax error", ">>>}"));
}

TEST_F(ContentLoaderFilesTest, LinksAreFollowed)
{
    m_folder.write("inner/file.json", R"({"a": "1"})");
    ASSERT_EQ(::symlink("inner/file.json", m_folder.pathOf("link").c_str()), 0);

    EXPECT_THAT(readMembers("link"), ElementsAre(Pair("a", "1")));
    EXPECT_EQ(readText("link"), R"({"a": "1"})");
}

TEST_F(ContentLoaderFilesTest, LinkToNothingIsMissing)
{
    ASSERT_EQ(::symlink("nothing", m_folder.pathOf("link").c_str()), 0);

    EXPECT_EQ(ContentLoader::inputData("link").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("link"));
    EXPECT_EQ(readText("link"), "");
}

TEST_F(ContentLoaderFilesTest, LinkToItselfIsMissing)
{
    ASSERT_EQ(::symlink("link", m_folder.pathOf("link").c_str()), 0);

    EXPECT_EQ(ContentLoader::inputData("link").getRoot(), nullptr);
    EXPECT_EQ(m_log.takeEntries(), missing("link"));
}

TEST_F(ContentLoaderFilesTest, WholeTextOfAFileIsGiven)
{
    std::string bytes;
    for (int i = 0; i < 256 * 1024; ++i)
        bytes += static_cast<char>(i);
    m_folder.write("file", bytes);

    EXPECT_EQ(readText("file"), bytes);
}

TEST_F(ContentLoaderFilesTest, TextOfAMissingFileIsEmptyAndNotLogged)
{
    const tbMemory::String text = ContentLoader::inputDataStr("file");

    EXPECT_TRUE(text.empty());
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(ContentLoaderFilesTest, TextOfAnEmptyFileIsEmpty)
{
    m_folder.write("file", "");

    EXPECT_EQ(readText("file"), "");
}

} // namespace tbScripts::test
