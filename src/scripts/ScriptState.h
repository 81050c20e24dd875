#pragma once

#include "scripts/ScriptStrategy.h"

#include "tbScripts/Interpreter.h"

#include <tbMemory/String.h>

#include <memory>

namespace tbScripts
{

/// What a script consists of.
struct ScriptState
{
    // Shared with the strategy and with runs in progress, which may outlive the script and then
    // report with the last name.
    std::shared_ptr<tbMemory::String> name;

    tbMemory::String sources;
    std::shared_ptr<ScriptStrategy> strategy; // never null, shared by copies
    INTERPRETER targetInterpreter = INTERPRETER_UNKNOWN;
};

} // namespace tbScripts
