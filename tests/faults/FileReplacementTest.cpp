// Saving while the system refuses: a file is the old or the new one, whatever happens.

#include "support/ChildProcess.h"
#include "support/LoadingFixture.h"
#include "support/RowName.h"

#include <tbScripts/ContentLoader.h>
#include <tbScripts/ProjectLoader.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tbScripts::test
{

namespace
{

constexpr int SAID_TRUE = 0;
constexpr int SAID_FALSE = 1;
constexpr int CANNOT_MOUNT = 2;

int save(const std::string& data, const std::string& path)
{
    return ContentLoader::outputData(data, path) ? SAID_TRUE : SAID_FALSE;
}

// Files end there, as on a disk that is full.
void limitFiles(rlim_t bytes)
{
    const rlimit limit{bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
}

// Saves more than a file may hold; `handler` is what the system's signal of that does.
int saveBeyondTheLimit(void (*handler)(int), const std::string& path)
{
    ::signal(SIGXFSZ, handler);
    limitFiles(1000);
    return save(std::string(5000, 'n'), path);
}

// From here on this process mounts for itself alone.
bool leaveCommonMounts()
{
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool isTemporary(const std::string& name)
{
    const std::string begin = ".tbscripts-";
    const std::string end = ".tmp";
    return name.size() > begin.size() + end.size() && name.compare(0, begin.size(), begin) == 0 &&
           name.compare(name.size() - end.size(), end.size(), end) == 0;
}

class FileReplacementTest : public LoadingFixture
{
protected:
    // What is in the folder beside what a save was interrupted in.
    std::vector<std::string> listWithoutTemporaries() const
    {
        std::vector<std::string> names = m_folder.list();
        names.erase(std::remove_if(names.begin(), names.end(), isTemporary), names.end());
        return names;
    }

    // Performs `action` in a process that alone sees a small disk as "small"; returns what it does.
    int onSmallDisk(const char* options, const std::function<int()>& action) const
    {
        std::filesystem::create_directory(m_folder.pathOf("small"));
        const std::string path = m_folder.pathOf("small");
        ChildProcess child(
            [&]
            {
                const bool isMounted =
                    leaveCommonMounts() && ::mount("none", path.c_str(), "tmpfs", 0, options) == 0;
                return isMounted ? action() : CANNOT_MOUNT;
            });
        return child.wait();
    }

    // Keeps what is on the small disk for the test, which does not see it.
    void keep(const std::string& name) const
    {
        m_folder.write("kept", m_folder.read("small/" + name));
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.pathOf("small")))
            m_folder.write("list/" + entry.path().filename().string(), "");
    }

    std::vector<std::string> keptNames() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.pathOf("list")))
            names.push_back(entry.path().filename().string());
        return names;
    }
};

TEST_F(FileReplacementTest, FileThatWouldGrowTooLargeStaysTheOldOneOrIsNotMade)
{
    m_folder.write("file", "old");
    for (const std::string name : {"file", "another"})
    {
        ChildProcess child([name] { return saveBeyondTheLimit(SIG_IGN, name); });

        EXPECT_EQ(child.wait(), SAID_TRUE);
        EXPECT_EQ(m_folder.read("file"), "old");
        EXPECT_THAT(m_folder.list(), ElementsAre("file"));
    }
}

TEST_F(FileReplacementTest, ProcessThatDiesOfItsFilesSizeLeavesTheOldFile)
{
    m_folder.write("file", "old");
    ChildProcess child([] { return saveBeyondTheLimit(SIG_DFL, "file"); });

    EXPECT_EQ(child.wait(), -SIGXFSZ);
    EXPECT_EQ(m_folder.read("file"), "old");
    EXPECT_THAT(listWithoutTemporaries(), ElementsAre("file"));
}

// A disk that cannot take a new file beside the old one.
struct DiskRow
{
    const char* row;
    const char* options;
    std::size_t oldSize;
    std::size_t newSize;
};

using FullDiskTest = OnRows<FileReplacementTest, DiskRow>;

ROWS(
    FullDiskTest,
    {"TooSmallForTheNewFile", "size=64k", 3, 100000},
    {"TooSmallForBothFiles", "size=64k", 40000, 40000},
    {"WithoutRoomForMoreNames", "size=64k,nr_inodes=2", 3, 1000});

TEST_P(FullDiskTest, LeavesTheOldFile)
{
    const std::string old(GetParam().oldSize, 'o');

    const int said = onSmallDisk(
        GetParam().options,
        [&]
        {
            m_folder.write("small/file", old);
            const int saidInside = save(std::string(GetParam().newSize, 'n'), "small/file");
            keep("file");
            return saidInside;
        });

    if (said == CANNOT_MOUNT)
        GTEST_SKIP() << "mounting a disk takes more rights";
    EXPECT_EQ(said, SAID_TRUE);
    EXPECT_EQ(m_folder.read("kept"), old);
    EXPECT_THAT(keptNames(), ElementsAre("file"));
}

TEST_F(FileReplacementTest, NewFileOnADiskThatTakesNoMoreFilesIsLogged)
{
    const int said = onSmallDisk(
        "size=64k,nr_inodes=2",
        [this]
        {
            m_folder.write("small/file", "old");
            const int saidInside = save("new", "small/other");
            const std::vector<LogEntry> entries = m_log.takeEntries();
            m_folder.write("logged", entries.empty() ? "nothing" : entries[0].message);
            return saidInside;
        });

    if (said == CANNOT_MOUNT)
        GTEST_SKIP() << "mounting a disk takes more rights";
    EXPECT_EQ(said, SAID_FALSE);
    EXPECT_EQ(m_folder.read("logged"), "Error when trying to open file saving : small/other");
}

// Such a file, as containers have them, cannot be replaced by another one.
TEST_F(FileReplacementTest, MountedFileIsWrittenInPlace)
{
    m_folder.write("outside", "a longer text than the new one");
    m_folder.write("file", "");
    ChildProcess child(
        [this]
        {
            const std::string source = m_folder.pathOf("outside");
            const std::string target = m_folder.pathOf("file");
            if (!leaveCommonMounts() ||
                ::mount(source.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0)
                return CANNOT_MOUNT;
            return save("new", "file");
        });

    const int said = child.wait();
    if (said == CANNOT_MOUNT)
        GTEST_SKIP() << "mounting a file takes more rights";
    EXPECT_EQ(said, SAID_TRUE);
    EXPECT_EQ(m_folder.read("outside"), "new");
    EXPECT_THAT(m_folder.list(), ElementsAre("file", "outside"));
}

constexpr int KILLS = 200;
constexpr unsigned int LONGEST_WAIT = 15000000; // steps of an empty loop, a save or two long

// Passes a while that has no measure, so that a kill comes at any moment.
void dawdle(unsigned int steps)
{
    for (volatile unsigned int i = 0; i < steps;)
        i = i + 1;
}

// Saves a project with a script "a" over and over, with different sources in turn.
class SaveInterruptionTest : public FileReplacementTest
{
protected:
    SaveInterruptionTest()
        : m_script(addScript("a", ""))
    {
        saveWith('1');
        m_first = m_folder.read("level_scripts.tbscripts");
        saveWith('2');
        m_second = m_folder.read("level_scripts.tbscripts");
    }

    void saveWith(char letter) const
    {
        ProjectSaveQuery query;
        query.path = "level.proj";
        m_script->setSources(std::string(200000, letter));
        ProjectLoader::save(query);
    }

    // Kills a process that saves, after it has begun to.
    void interrupt(unsigned int steps) const
    {
        int started[2] = {-1, -1};
        ASSERT_EQ(::pipe(started), 0);
        ChildProcess child(
            [this, &started]() -> int
            {
                for (bool isFirst = true;; isFirst = false)
                {
                    saveWith('1');
                    if (isFirst && ::write(started[1], "x", 1) != 1)
                        return 1;
                    saveWith('2');
                }
            });
        ::close(started[1]); // a child that dies early is the end of the file
        char letter = 0;
        EXPECT_EQ(::read(started[0], &letter, 1), 1);
        dawdle(steps);
        child.kill();
        EXPECT_EQ(child.wait(), -SIGKILL);
        ::close(started[0]);
    }

    Script* m_script;
    std::string m_first;
    std::string m_second;
};

TEST_F(SaveInterruptionTest, ProcessKilledAtAnyMomentLeavesAWholeFile)
{
    std::minstd_rand random(1);
    int torn = 0;
    for (int i = 0; i < KILLS; ++i)
    {
        interrupt(static_cast<unsigned int>(random()) % LONGEST_WAIT);
        const std::string document = m_folder.read("level_scripts.tbscripts");
        torn += document == m_first || document == m_second ? 0 : 1;
    }

    EXPECT_EQ(torn, 0);
    EXPECT_NE(m_first, m_second);
    EXPECT_THAT(listWithoutTemporaries(), ElementsAre("level_scripts.tbscripts"));
}

TEST_F(SaveInterruptionTest, NextProcessSavesAfterAKill)
{
    interrupt(100000);

    saveWith('1');

    EXPECT_EQ(m_folder.read("level_scripts.tbscripts"), m_first);
}

} // namespace

} // namespace tbScripts::test
