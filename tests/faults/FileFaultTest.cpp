// Files whose other end, folder or process goes away, or that no descriptor is left for.

#include "support/ChildProcess.h"
#include "support/LoadingFixture.h"
#include "support/Sanitizers.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/ContentLoader.h>

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr int SAID_TRUE = 0;
constexpr int SAID_FALSE = 1;
constexpr int NOT_READY = 2;

constexpr std::size_t MEBIBYTE = std::size_t{1} << 20;

void takeNoNotice(int /*signal*/) {}

// Interrupts this process every millisecond, waiting calls included.
void interruptOften()
{
    struct sigaction action
    {
    };

    action.sa_handler = &takeNoNotice;
    ::sigaction(SIGALRM, &action, nullptr);
    const itimerval often{{0, 1000}, {0, 1000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
}

std::size_t readToTheEnd(int descriptor)
{
    std::string bytes(4096, '\0');
    std::size_t total = 0;
    for (ssize_t count = 1; count > 0; total += static_cast<std::size_t>(count))
        count = ::read(descriptor, bytes.data(), bytes.size());
    return total;
}

} // namespace

class FileFaultTest : public LoadingFixture
{
protected:
    // Makes a FIFO and opens its reading end.
    int openReader(const char* name) const
    {
        const std::string path = m_folder.pathOf(name);
        return ::mkfifo(path.c_str(), 0600) == 0 ? ::open(path.c_str(), O_RDONLY | O_NONBLOCK) : -1;
    }
};

TEST_F(FileFaultTest, WritingGoesOnAfterEverySignal)
{
    const int reader = openReader("pipe");
    ChildProcess child(
        [reader]
        {
            ::close(reader);
            interruptOften();
            const bool isDone = ContentLoader::outputData(std::string(4 * MEBIBYTE, 'n'), "pipe");
            return isDone ? SAID_TRUE : SAID_FALSE;
        });
    // Only now, so that the writer finds the pipe full again and again.
    const int waiting = ::open(m_folder.pathOf("pipe").c_str(), O_RDONLY);
    ::close(reader);

    const std::size_t count = readToTheEnd(waiting);

    EXPECT_EQ(child.wait(), SAID_TRUE);
    EXPECT_EQ(count, 4 * MEBIBYTE);
    ::close(waiting);
}

TEST_F(FileFaultTest, ReaderThatGoesAwayEndsNobody)
{
    const int reader = openReader("pipe");
    ChildProcess child(
        [reader]
        {
            ::close(reader);
            ::signal(SIGPIPE, SIG_DFL);
            return ContentLoader::outputData(std::string(MEBIBYTE, 'n'), "pipe") ? SAID_TRUE
                                                                                 : SAID_FALSE;
        });
    std::string some(100, '\0');
    while (::read(reader, some.data(), some.size()) <= 0) // until the writer has begun
    {
    }

    ::close(reader);

    EXPECT_EQ(child.wait(), SAID_TRUE);
}

TEST_F(FileFaultTest, FolderThatComesAndGoesGivesAWholeFileOrNone)
{
    const std::string folder = m_folder.pathOf("folder");
    ChildProcess vandal(
        [&folder]() -> int
        {
            for (;;)
            {
                std::error_code error;
                std::filesystem::create_directory(folder, error);
                std::filesystem::remove_all(folder, error);
            }
        });

    int torn = 0;
    for (int i = 0; i < 2000; ++i)
    {
        ContentLoader::outputData(std::string(10000, 'n'), "folder/file");
        const std::string bytes = m_folder.read("folder/file");
        torn += bytes == "<missing>" || bytes == std::string(10000, 'n') ? 0 : 1;
    }

    EXPECT_EQ(torn, 0);
    m_log.takeEntries(); // each time that there was no folder
    vandal.kill();
    vandal.wait();
}

TEST_F(FileFaultTest, DocumentThatTakesTurnsWithAFifoIsReadOrMissingAndNotWaitedFor)
{
    const std::string document = m_folder.pathOf("document");
    const std::string pipe = m_folder.pathOf("pipe");
    m_folder.write("document", R"({"a": "1"})");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ChildProcess vandal(
        [&]() -> int
        {
            for (;;)
                ::renameat2(AT_FDCWD, document.c_str(), AT_FDCWD, pipe.c_str(), RENAME_EXCHANGE);
        });

    ChildProcess reader(
        [this, &document]
        {
            ::alarm(60);
            const LogEntry missing{
                "Can't find Object Declaration file " + document, "ContentLoader::inputData"};
            for (int i = 0; i < 5000; ++i)
            {
                const bool isRead = ContentLoader::inputData("document").getRoot() != nullptr;
                const std::vector<LogEntry> entries = m_log.takeEntries();
                if (!isRead && entries != std::vector<LogEntry>{missing})
                    return SAID_FALSE;
                ContentLoader::inputDataStr("document");
            }
            return SAID_TRUE;
        });

    EXPECT_EQ(reader.wait(), SAID_TRUE);
    vandal.kill();
    vandal.wait();
}

TEST_F(FileFaultTest, FolderOfTheProcessThatWasRemovedTakesNoFile)
{
    ChildProcess child(
        [this]
        {
            m_folder.write("here/file", "");
            if (::chdir(m_folder.pathOf("here").c_str()) != 0)
                return NOT_READY;
            std::filesystem::remove_all(m_folder.pathOf("here"));
            tbResources::ResourceManager::getInstance()->kill();
            tbResources::ResourceManager::getInstance()->setWorkingPath("");
            return ContentLoader::outputData("new", "file") ? SAID_TRUE : SAID_FALSE;
        });

    EXPECT_EQ(child.wait(), SAID_FALSE);
}

TEST_F(FileFaultTest, NoDescriptorLeftIsAFileThatCannotBeOpened)
{
    if (IS_SANITIZED)
        GTEST_SKIP() << "the checkers need a descriptor to look whether memory is readable";
    m_folder.write("file", "old");
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);

    const bool isWritten = ContentLoader::outputData("new", "file");
    const tbMemory::String bytes = ContentLoader::inputDataStr("file");

    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(isWritten);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(m_folder.read("file"), "old");
    expectLogged("Error when trying to open file saving : file", "ContentLoader");
}

} // namespace tbScripts::test
