#pragma once

#include "tbScripts/FunctionParameter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/Buffer.h>
#include <tbMemory/BufferView.h>

namespace tbScripts
{

class Script;

/// Work that an interpreter does with script values: it runs chunks, calls functions, and turns
/// values into bytes and back. `Environment` says what each operation does.
class EnvironmentCalls
{
public:
    virtual bool execute(const Script& script) = 0;
    virtual bool callScriptFunction(
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs) = 0;
    virtual tbMemory::Buffer
    serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership) = 0;
    virtual ScriptObjectReference
    deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes) = 0;

protected:
    ~EnvironmentCalls() = default;
};

} // namespace tbScripts
