#pragma once

#include "core/lua/LuaStateHandle.h"
#include "environments/EnvironmentStrategy.h"
#include "environments/lua/LuaScriptCalls.h"

#include <tbMemory/String.h>

#include <string>

namespace tbScripts::lua
{

/// Back-end of an environment for Lua: owns one state with the standard libraries.
///
/// Each operation is one `LuaHostCall`, created first: errors of the interpreter are contained and
/// logged, and the operation returns its neutral value. The operations are in three files: globals,
/// bindings, and here calls and the state itself.
class LuaEnvironmentStrategy final : public EnvironmentStrategy
{
public:
    explicit LuaEnvironmentStrategy(Name environmentName);
    ~LuaEnvironmentStrategy() override;

    /// Returns whether there was memory for a state.
    bool hasState() const;

    const LuaStateHandle& getHandle() const;

    bool execute(const Script& script) override;
    void requestGarbageCollection() override;
    void clearGlobals() override;
    void setVarObjectReference(
        const tbMemory::StringView& name, const ScriptObjectReference& value) override;
    void setVarString(const tbMemory::StringView& name, const tbMemory::StringView& value) override;
    void setVarDouble(const tbMemory::StringView& name, double value) override;
    void setVarFloat(const tbMemory::StringView& name, float value) override;
    void setVarInt(const tbMemory::StringView& name, std::int32_t value) override;
    void setVarBool(const tbMemory::StringView& name, bool value) override;
    void setObject(
        const tbMemory::StringView& name,
        const tbMemory::StringView& userTypeName,
        void* object) override;
    bool isVarSet(const tbMemory::StringView& name) override;
    ScriptObjectReference getVarObjectReference(const tbMemory::StringView& name) override;
    tbMemory::StringView getVarString(
        const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) override;
    double getVarDouble(const tbMemory::StringView& name, double defaultValue) override;
    float getVarFloat(const tbMemory::StringView& name, float defaultValue) override;
    std::int32_t getVarInt(const tbMemory::StringView& name, std::int32_t defaultValue) override;
    bool getVarBool(const tbMemory::StringView& name, bool defaultValue) override;
    void*
    getObject(const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) override;
    ScriptObjectReference getScriptFunction(const tbMemory::StringView& name) override;
    std::unique_ptr<Function> createFunction(const tbMemory::StringView& name) override;
    std::unique_ptr<UserType> createUserType(const tbMemory::StringView& name) override;
    std::unique_ptr<Namespace> createNamespace(const tbMemory::StringView& name) override;
    bool callScriptFunction(
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs) override;
    tbMemory::Buffer
    serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership) override;
    ScriptObjectReference
    deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes) override;

    void installFunction(Function& function) override;
    void installUserType(UserType& type) override;
    void installNamespace(Namespace& scope) override;
    void resolveDuplicate(std::unique_ptr<Function> created, Function& existing) override;
    void resolveDuplicate(std::unique_ptr<UserType> created, UserType& existing) override;
    void resolveDuplicate(std::unique_ptr<Namespace> created, Namespace& existing) override;
    bool isRunning() const override;
    bool isTearingDown() const override;
    void beginTeardown() override;
    void shutDown() override;
    void defer(std::function<void()> action) override;

private:
    // Sets the result and logs its message. Returns false, the outcome of a failure.
    bool _fail(const tbMemory::StringView& message, std::int32_t code);

    template <typename PushValue>
    void _setGlobal(const tbMemory::StringView& name, PushValue&& pushValue);

    // Runs `read(state)` with the global on top of the stack.
    template <typename Read>
    void _readGlobal(const tbMemory::StringView& name, Read&& read);

    // Calls `takeNumber(number)` if the global is one, or a string that reads as one.
    template <typename TakeNumber>
    void _readNumber(const tbMemory::StringView& name, TakeNumber&& takeNumber);

    // Returns a handle on global `name` if `accepts` its type, else an empty one.
    ScriptObjectReference _anchorGlobal(
        const tbMemory::StringView& name,
        FUNCTION_PARAMETER_TYPE type,
        bool (*accepts)(int luaType));

    LuaStateHandle m_handle;
    LuaScriptCalls m_calls;
    tbMemory::String m_textOfNumber; // the last number that getVarString returned as a string
};

} // namespace tbScripts::lua
