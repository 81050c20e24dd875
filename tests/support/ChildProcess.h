#pragma once

#include <functional>
#include <sys/types.h>

namespace tbScripts::test
{

/// A copy of this process that does something which this one must not: run into limits, die.
class ChildProcess
{
public:
    /// Starts `work`; what it returns becomes the exit code.
    explicit ChildProcess(const std::function<int()>& work);

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Kills it, if it was not waited for.
    ~ChildProcess();

    /// Ends it wherever it is.
    void kill();

    /// Waits for its end and returns its exit code, or the negative number of the signal that ended
    /// it.
    int wait();

private:
    pid_t m_id;
};

} // namespace tbScripts::test
