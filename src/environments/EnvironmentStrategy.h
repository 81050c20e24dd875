#pragma once

#include "tbScripts/ExecutionResult.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/Buffer.h>
#include <tbMemory/BufferView.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace tbScripts
{

class Function;
class Namespace;
class Script;
class UserType;

/// Back-end of an environment for one interpreter. Copies of an environment share it.
///
/// It knows the environment that it was made for by that one's name alone, which it shares: so it
/// may outlive the environment, and then reports with the last name.
class EnvironmentStrategy
{
public:
    using Name = std::shared_ptr<const tbMemory::String>;

    explicit EnvironmentStrategy(Name environmentName);

    EnvironmentStrategy(const EnvironmentStrategy&) = delete;
    EnvironmentStrategy& operator=(const EnvironmentStrategy&) = delete;

    virtual ~EnvironmentStrategy();

    virtual bool execute(const Script& script) = 0;
    virtual void requestGarbageCollection() = 0;
    virtual void clearGlobals() = 0;
    virtual void
    setVarObjectReference(const tbMemory::StringView& name, const ScriptObjectReference& value) = 0;
    virtual void
    setVarString(const tbMemory::StringView& name, const tbMemory::StringView& value) = 0;
    virtual void setVarDouble(const tbMemory::StringView& name, double value) = 0;
    virtual void setVarFloat(const tbMemory::StringView& name, float value) = 0;
    virtual void setVarInt(const tbMemory::StringView& name, std::int32_t value) = 0;
    virtual void setVarBool(const tbMemory::StringView& name, bool value) = 0;
    virtual void setObject(
        const tbMemory::StringView& name,
        const tbMemory::StringView& userTypeName,
        void* object) = 0;
    virtual bool isVarSet(const tbMemory::StringView& name) = 0;
    virtual ScriptObjectReference getVarObjectReference(const tbMemory::StringView& name) = 0;
    virtual tbMemory::StringView
    getVarString(const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) = 0;
    virtual double getVarDouble(const tbMemory::StringView& name, double defaultValue) = 0;
    virtual float getVarFloat(const tbMemory::StringView& name, float defaultValue) = 0;
    virtual std::int32_t getVarInt(const tbMemory::StringView& name, std::int32_t defaultValue) = 0;
    virtual bool getVarBool(const tbMemory::StringView& name, bool defaultValue) = 0;
    virtual void*
    getObject(const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) = 0;
    virtual ScriptObjectReference getScriptFunction(const tbMemory::StringView& name) = 0;
    virtual std::unique_ptr<Function> createFunction(const tbMemory::StringView& name) = 0;
    virtual std::unique_ptr<UserType> createUserType(const tbMemory::StringView& name) = 0;
    virtual std::unique_ptr<Namespace> createNamespace(const tbMemory::StringView& name) = 0;
    virtual bool callScriptFunction(
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs) = 0;
    virtual tbMemory::Buffer
    serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership) = 0;
    virtual ScriptObjectReference
    deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes) = 0;

    /// Publishes a function that was made for an earlier interpreter in the present one. Within
    /// its own interpreter a function is left as it is.
    virtual void installFunction(Function& function) = 0;

    /// The same for a user type, whose constructor and destructor come with it, and for a
    /// namespace, which is empty then.
    virtual void installUserType(UserType& type) = 0;
    virtual void installNamespace(Namespace& scope) = 0;

    /// Ends `made`, while whose publishing `known` was declared under the same name: that one stays
    /// published, as new; a namespace keeps what is in it. Back-ends that make nothing have nothing
    /// to do.
    virtual void resolveDuplicate(std::unique_ptr<Function> made, Function& known);
    virtual void resolveDuplicate(std::unique_ptr<UserType> made, UserType& known);
    virtual void resolveDuplicate(std::unique_ptr<Namespace> made, Namespace& known);

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
