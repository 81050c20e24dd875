#pragma once

#include "environments/EnvironmentStrategy.h"

namespace tbScripts
{

/// Back-end of an environment without interpreter: logs a warning for each call and returns the
/// neutral value.
class DummyEnvironmentStrategy final : public EnvironmentStrategy
{
public:
    using EnvironmentStrategy::EnvironmentStrategy;

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
    bool isRunning() const override;
    bool isTearingDown() const override;
    void beginTeardown() override;
    void shutDown() override;
    void defer(std::function<void()> action) override;

private:
    // Logs `request`, the environment's name and `suffix`.
    void _warn(const char* request, const char* suffix) const;

    bool m_isTearingDown = false;
};

} // namespace tbScripts
