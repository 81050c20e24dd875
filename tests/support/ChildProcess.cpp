#include "support/ChildProcess.h"

#include <csignal>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tbScripts::test
{

namespace
{

constexpr int UNCAUGHT = 111;

// Nothing of the framework may go on in the child.
[[noreturn]] void runAndExit(const std::function<int()>& work)
{
    try
    {
        ::_exit(work());
    }
    catch (...)
    {
        ::_exit(UNCAUGHT);
    }
}

} // namespace

ChildProcess::ChildProcess(const std::function<int()>& work)
    : m_id(::fork())
{
    if (m_id < 0)
        throw std::runtime_error("no child process");
    if (m_id == 0)
        runAndExit(work);
}

ChildProcess::~ChildProcess()
{
    if (m_id <= 0)
        return;
    kill();
    wait();
}

void ChildProcess::kill()
{
    ::kill(m_id, SIGKILL);
}

int ChildProcess::wait()
{
    int status = 0;
    ::waitpid(std::exchange(m_id, 0), &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

} // namespace tbScripts::test
