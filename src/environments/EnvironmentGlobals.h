#pragma once

#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/StringView.h>

#include <cstdint>

namespace tbScripts
{

/// The globals of an interpreter, set and read by name. `Environment` says what each operation
/// does; here each kind of value has its own name, because virtual functions with overloads and
/// defaults are easily confused.
class EnvironmentGlobals
{
public:
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

protected:
    ~EnvironmentGlobals() = default;
};

} // namespace tbScripts
