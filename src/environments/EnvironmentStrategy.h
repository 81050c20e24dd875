#pragma once

#include "environments/BindingFactory.h"
#include "environments/EnvironmentCalls.h"
#include "environments/EnvironmentGlobals.h"

#include "tbScripts/ExecutionResult.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tbScripts
{

/// Back-end of an environment for one interpreter: its globals, its calls, its bindings, and here
/// its life. Copies of an environment share it.
///
/// It knows the environment that it was made for by that one's name alone, which it shares: so it
/// may outlive the environment, and then reports with the last name.
class EnvironmentStrategy : public EnvironmentGlobals,
                            public EnvironmentCalls,
                            public BindingFactory
{
public:
    using Name = std::shared_ptr<const tbMemory::String>;

    explicit EnvironmentStrategy(Name environmentName);

    EnvironmentStrategy(const EnvironmentStrategy&) = delete;
    EnvironmentStrategy& operator=(const EnvironmentStrategy&) = delete;

    virtual ~EnvironmentStrategy();

    virtual void requestGarbageCollection() = 0;

    /// Removes every global and every loaded module, for the teardown.
    virtual void clearGlobals() = 0;

    /// Returns whether a call of the host into the interpreter is in progress, or its end.
    virtual bool isRunning() const = 0;

    /// Returns whether nothing can be declared any more: the interpreter is going or gone.
    virtual bool isTearingDown() const = 0;

    /// From here on the host is refused: what finalisers ask for has no effect.
    virtual void beginTeardown() = 0;

    /// Closes the interpreter; what refers to it finds none from here on. What was put off
    /// meanwhile runs at its end.
    virtual void shutDown() = 0;

    /// Has `action` run when the outermost call in progress returns. Requires: `isRunning()`.
    virtual void putOff(std::function<void()> action) = 0;

    const ExecutionResult& getLastExecutionResult() const;

    /// Has `result` show the last outcome, and each further one until it is removed again. Every
    /// environment that shares this back-end keeps one, so that its address stays the same whatever
    /// back-end it has.
    void addResult(ExecutionResult& result);
    void removeResult(ExecutionResult& result);

    /// Returns whether an environment has this back-end, and whether several have it.
    bool isServing() const { return !m_shownIn.empty(); }

    bool isShared() const { return m_shownIn.size() > 1; }

protected:
    tbMemory::StringView getEnvironmentName() const;

    void resetResult()
    {
        if (!m_lastResult.success)
            _forgetFailure();
    }

    void setFailure(const tbMemory::StringView& message, std::int32_t code);

private:
    void _forgetFailure();
    void _showResult();

    Name m_environmentName;
    ExecutionResult m_lastResult;
    std::vector<ExecutionResult*> m_shownIn; // not owned; one for each environment
};

} // namespace tbScripts
