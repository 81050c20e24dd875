#pragma once

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>

#include <cstddef>
#include <initializer_list>
#include <string>

namespace bench
{

/// A host that uses the public interface.
class LibraryHost
{
public:
    LibraryHost();

    LibraryHost(const LibraryHost&) = delete;
    LibraryHost& operator=(const LibraryHost&) = delete;

    tbScripts::Environment& getEnvironment() { return m_environment; }

    /// Compiles and runs `source`.
    void run(const std::string& source);

    /// Calls script function `function` with one number and returns the one it gives.
    double call(const tbScripts::ScriptObjectReference& function, double argument);

    double callGlobal(const char* name, double argument);

    /// Collects all garbage.
    void collect();

    /// Returns the bytes that the interpreter holds, after a collection.
    double countScriptBytes();

private:
    tbScripts::Environment m_environment;
    tbScripts::ScriptObjectReference m_countBytes;
};

/// Has every message of the library end the program.
void failOnLibraryMessages();

/// Declares parameters and binds `callable`.
void define(
    tbScripts::Function* function,
    std::initializer_list<tbScripts::FUNCTION_PARAMETER_TYPE> parameters,
    tbScripts::Function::Callable callable);

} // namespace bench
