#pragma once

#include "environments/BindingFactory.h"
#include "environments/EnvironmentCalls.h"
#include "environments/EnvironmentGlobals.h"

#include "tbScripts/ExecutionResult.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tbScripts
{

/// Back-end of an environment for one interpreter: its globals, its calls, its bindings, and here
/// its life. Copies of an environment share it.
///
/// The back-end knows only the name of the environment that it was created for, and shares it: so
/// it may outlive the environment, and then reports with the last name.
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

    /// Returns whether a call of the host into the interpreter runs, or its cleanup.
    virtual bool isRunning() const = 0;

    /// Returns whether the interpreter is closing or closed, so that nothing can be declared any
    /// more.
    virtual bool isTearingDown() const = 0;

    /// From here on every operation of the host is refused, also those that finalisers call.
    virtual void beginTeardown() = 0;

    /// Closes the interpreter; objects that refer to it find none from here on. Deferred actions
    /// run at its end.
    virtual void shutDown() = 0;

    /// Defers `action` until the outermost call returns. Requires: `isRunning()`.
    virtual void defer(std::function<void()> action) = 0;

    /// `serializeScriptObject` writes at most so many bytes.
    void setSerializationLimit(std::size_t bytes) { m_serializationLimit = bytes; }

    std::size_t getSerializationLimit() const { return m_serializationLimit; }

    const ExecutionResult& getLastExecutionResult() const;

    /// Writes the last outcome, and each further one, to `result` until `removeResult`. Every
    /// environment that shares this back-end has its own result, so that the address stays the same
    /// when the back-end changes.
    void addResult(ExecutionResult& result);
    void removeResult(ExecutionResult& result);

    ///@{
    /// Count the environments that have this back-end. One that is destroyed while the interpreter
    /// runs counts until its deferred release.
    void addUser() { ++m_users; }

    void removeUser() { --m_users; }

    bool isServing() const { return m_users > 0; }

    bool isShared() const { return m_users > 1; }

    ///@}

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

    // docs/decisions/0022-limit-of-serialized-bytes.md
    static constexpr std::size_t USUAL_SERIALIZATION_LIMIT = std::size_t{256} * 1024 * 1024;

    Name m_environmentName;
    std::size_t m_serializationLimit = USUAL_SERIALIZATION_LIMIT;
    ExecutionResult m_lastResult;
    std::uint32_t m_users = 0;
    std::vector<ExecutionResult*> m_shownIn; // not owned; one for each environment
};

} // namespace tbScripts
