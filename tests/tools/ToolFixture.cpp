#include "tools/ToolFixture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace tool::test
{

namespace
{

namespace fs = std::filesystem;

// A file in memory that takes an output of any size; closed at its end.
class Collector
{
public:
    Collector()
        : m_descriptor(::memfd_create("output", MFD_CLOEXEC))
    {
    }

    Collector(const Collector&) = delete;
    Collector& operator=(const Collector&) = delete;

    ~Collector() { ::close(m_descriptor); }

    int get() const { return m_descriptor; }

    std::string content() const
    {
        std::string text(static_cast<std::size_t>(::lseek(m_descriptor, 0, SEEK_END)), '\0');
        ::lseek(m_descriptor, 0, SEEK_SET);
        const ssize_t size = ::read(m_descriptor, text.data(), text.size());
        text.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
        return text;
    }

private:
    int m_descriptor;
};

pid_t start(const std::string& folder, std::vector<std::string> words, int output, int errors)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);

    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    pid_t process = -1;
    const int failed =
        ::posix_spawn(&process, words[0].c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0)
        throw std::runtime_error("cannot start " + words[0]);
    return process;
}

void awaitEnd(pid_t process, Outcome& outcome)
{
    int status = 0;
    ::waitpid(process, &status, 0);
    if (WIFEXITED(status))
        outcome.status = WEXITSTATUS(status);
    else
        outcome.signal = WTERMSIG(status);
}

Outcome execute(const std::string& folder, const std::vector<std::string>& words)
{
    const Collector output;
    const Collector errors;
    Outcome outcome;
    awaitEnd(start(folder, words, output.get(), errors.get()), outcome);
    outcome.output = output.content();
    outcome.errors = errors.content();
    return outcome;
}

std::vector<std::string> commandOf(const std::vector<std::string>& arguments)
{
    std::vector<std::string> words = {TBSCRIPTS_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

// Reads a terminal until nobody has it open any more.
std::string drain(int terminal)
{
    std::string text;
    std::array<char, 4096> chunk;
    for (;;)
    {
        const ssize_t size = ::read(terminal, chunk.data(), chunk.size());
        if (size <= 0)
            return text;
        text.append(chunk.data(), static_cast<std::size_t>(size));
    }
}

} // namespace

bool operator==(const Outcome& left, const Outcome& right)
{
    return left.status == right.status && left.signal == right.signal &&
           left.output == right.output && left.errors == right.errors;
}

void PrintTo(const Outcome& outcome, std::ostream* stream)
{
    *stream << "status " << outcome.status << ", signal " << outcome.signal << ", output <"
            << outcome.output << ">, errors <" << outcome.errors << '>';
}

ToolFixture::ToolFixture()
{
    std::string pattern = (fs::temp_directory_path() / "tbscripts-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a scratch folder");
    m_folder = pattern;
    ::setenv("TOOL", TBSCRIPTS_TOOL, 1);
}

ToolFixture::~ToolFixture()
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

Outcome ToolFixture::run(const std::vector<std::string>& arguments) const
{
    return execute(m_folder, commandOf(arguments));
}

Outcome ToolFixture::runInShell(const std::string& command) const
{
    return execute(m_folder, {"/bin/sh", "-c", command});
}

Outcome ToolFixture::runInterrupted(const std::vector<std::string>& arguments, int turns) const
{
    const Collector output;
    const Collector errors;
    const pid_t process = start(m_folder, commandOf(arguments), output.get(), errors.get());
    for (int turn = 0; turn < turns; ++turn)
        ::sched_yield();
    ::kill(process, SIGINT);
    Outcome outcome;
    awaitEnd(process, outcome);
    outcome.output = output.content();
    outcome.errors = errors.content();
    return outcome;
}

std::string ToolFixture::runOnTerminal(const std::vector<std::string>& arguments) const
{
    const Collector output;
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ::grantpt(terminal);
    ::unlockpt(terminal);
    const int end = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const pid_t process = start(m_folder, commandOf(arguments), output.get(), end);
    ::close(end);
    std::string text = drain(terminal);
    ::close(terminal);
    Outcome outcome;
    awaitEnd(process, outcome);
    return text;
}

void ToolFixture::write(const std::string& path, std::string_view bytes) const
{
    fs::create_directories(fs::path(pathOf(path)).parent_path());
    std::ofstream(pathOf(path), std::ios::binary) << bytes;
}

std::string ToolFixture::read(const std::string& path) const
{
    std::ifstream stream(pathOf(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

bool ToolFixture::exists(const std::string& path) const
{
    return fs::exists(fs::symlink_status(pathOf(path)));
}

std::vector<std::string> ToolFixture::everything() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(m_folder))
        names.push_back(entry.path().lexically_relative(m_folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ToolFixture::pathOf(const std::string& path) const
{
    return m_folder + '/' + path;
}

Outcome success(const std::string& output)
{
    return {0, 0, output, ""};
}

Outcome failure(const std::string& errors, const std::string& output)
{
    return {1, 0, output, errors};
}

Outcome trouble(const std::string& errors, const std::string& output)
{
    return {2, 0, output, errors};
}

} // namespace tool::test
