#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/ExecutionResult.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/Interpreter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/Buffer.h>
#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <type_traits>

/// Everything that the library shows to hosts.
namespace tbScripts
{

class EnvironmentCore;
class Function;
class Namespace;
class Script;
class UserType;

/// Named environment for scripts: an interpreter with its globals, and the functions, user types
/// and namespaces that the host declares in it. An environment runs compiled scripts.
///
/// A new environment has no interpreter: every operation that needs one logs a warning (tag
/// "Environment") and returns its neutral value. With one, failures are logged with tag
/// "LuaEnvironment". No operation throws anything but `std::bad_alloc`. Names of globals are plain
/// keys, without path syntax, and end at their first NUL.
///
/// Calls nest: the host calls a script that calls the host again. They may nest 200 deep, less on a
/// thread with a small stack; the next call fails with "C stack overflow". If an environment is
/// destroyed inside its own call, its interpreter and bindings are destroyed when the outermost
/// call returns.
///
/// @code
/// Environment environment;
/// environment.setName("level 1");
/// environment.setEnvironmentFor(INTERPRETER_LUA);
/// environment.setVar("difficulty", 3);
/// environment.execute(script);
/// const double speed = environment.getVar("speed", 1.0);
/// @endcode
///
/// Threads: docs/reliability.md says which rule holds for the whole library.
class TBSCRIPTS_API Environment
{
public:
    /// Creates an environment without name and interpreter.
    Environment();

    ///@{
    /// Creates a second handle on the interpreter and the bindings of `other`.
    ///
    /// Compatibility: a copy creates no second interpreter; the last copy destroys interpreter and
    /// bindings. Only the copy through which a name is declared knows that name (decision 0006).
    Environment(const Environment& other);
    Environment& operator=(const Environment& other);
    ///@}

    /// Destroys functions, globals, namespaces and user types and then the interpreter, unless a
    /// copy shares them. Finalisers and destructors run during this; operations of this environment
    /// that they call return their neutral values.
    ~Environment();

    /// Returns the name, empty for a new environment. Messages name the environment by it.
    ///
    /// Valid until: the name changes or the environment is destroyed.
    tbMemory::StringView getName() const;

    /// Replaces the name. The `EnvironmentManager` still lists the environment under its old name.
    void setName(const tbMemory::StringView& name);

    /// Returns the outcome of the last `execute` or `callScriptFunction`.
    ///
    /// Valid until: the environment is destroyed. A change of interpreter resets the result.
    const ExecutionResult& getLastExecutionResult() const;

    /// Destroys the present interpreter with all globals, and starts `interpreter`.
    ///
    /// Declared functions, types and namespaces stay registered but do nothing until the host
    /// declares them again.
    /// On failure: any value but `INTERPRETER_LUA` is logged and leaves the environment without
    /// interpreter; so does a lack of memory. While this environment runs a script, the change is
    /// refused and logged. All messages have tag "Environment".
    void setEnvironmentFor(INTERPRETER interpreter);

    /// Runs the compiled form of `script`, drops its return values, and returns whether it
    /// completed without an error.
    ///
    /// On failure: logged; `getLastExecutionResult` says why.
    bool execute(const Script& script);

    /// Runs two full collections. A finaliser that raises is logged; the collections continue.
    void requestGarbageCollection();

    ///@{
    /// Sets global `name`. A null string stores nil; a string ends at its first NUL.
    void setVar(const tbMemory::StringView& name, bool value);
    void setVar(const tbMemory::StringView& name, int value);
    void setVar(const tbMemory::StringView& name, float value);
    void setVar(const tbMemory::StringView& name, double value);
    void setVar(const tbMemory::StringView& name, const char* value);
    void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value);
    ///@}

    /// Sets global `name` to the value of the reference `value`; an empty reference, or one of
    /// another environment, stores nil.
    void setVar(const tbMemory::StringView& name, const ScriptObjectReference& value);

    /// Not offered: a pointer would be taken for a `bool`. Use `setObject`.
    template <
        typename T,
        typename = std::enable_if_t<!std::is_same<std::remove_cv_t<T>, char>::value>>
    void setVar(const tbMemory::StringView& name, T* value) = delete;

    /// Sets global `name` to an instance of `userTypeName` with `object`; nil if `object` is null.
    /// A name of no declared type creates an instance without methods.
    ///
    /// Ownership: the host keeps `object`.
    ///
    /// @code
    /// environment.setObject("home", "Point", &home); // the host keeps it
    /// @endcode
    void setObject(
        const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object);

    /// Returns whether global `name` is anything but nil.
    bool isVarSet(const tbMemory::StringView& name) const;

    ///@{
    /// Returns global `name`, or `defaultValue` if the global is of another kind. A string that
    /// reads as a number counts as a number; only a boolean counts as a boolean. The `int` form
    /// drops the fraction.
    ///
    /// Compatibility: the `int` form keeps the low 32 bits of larger numbers (decision 0006).
    bool getVar(const tbMemory::StringView& name, bool defaultValue) const;
    int getVar(const tbMemory::StringView& name, int defaultValue) const;
    float getVar(const tbMemory::StringView& name, float defaultValue) const;
    double getVar(const tbMemory::StringView& name, double defaultValue) const;
    ///@}

    ///@{
    /// Returns all bytes of the string in global `name`, a number as a string, and `defaultValue`
    /// for other values.
    ///
    /// Valid until: the script's string is collected; for a number, until the next such call. A
    /// returned default is the caller's own view.
    tbMemory::StringView getVar(const tbMemory::StringView& name, const char* defaultValue) const;
    tbMemory::StringView
    getVar(const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) const;
    ///@}

    /// Returns a handle on global `name`, an empty one for nil, functions and coroutines. Use
    /// `getScriptFunction` for functions.
    ScriptObjectReference getVar(const tbMemory::StringView& name) const;

    /// Returns the host object of global `name` if that is an instance of `userTypeName`, else
    /// null. A null `userTypeName` skips the check of the type.
    void*
    getObject(const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) const;

    /// Returns a handle on the script function in global `name`, an empty one for other values.
    ScriptObjectReference getScriptFunction(const tbMemory::StringView& name) const;

    /// Calls `function` with `inputs` and reads its results into `outputs`; returns whether the
    /// call completed without an error.
    ///
    /// The kind of each output is the kind that the host expects. Results beyond the outputs are
    /// dropped, outputs beyond the results stay unchanged.
    /// On failure: logged; `getLastExecutionResult` says why; the outputs stay unchanged, unless
    /// memory runs out while they are read.
    /// Compatibility: a result of another kind is logged (tag "LuaEnvironmentStrategy"), and its
    /// output and all later ones stay unchanged, but the call succeeds (decision 0006).
    ///
    /// @code
    /// std::array<FunctionParameter, 3> results{"rest", 0.0, 0.0};
    /// Parameters outputs = results;
    /// if (environment.callScriptFunction(decide, {7, 1.5, true}, outputs))
    ///     std::cout << results[0].getString() << ' ' << results[1].getDouble() << '\n';
    /// @endcode
    bool callScriptFunction(
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs);

    /// Returns the value of `object` as bytes, for this process only: the bytes contain pointers to
    /// host objects. Functions inside of tables are left out.
    ///
    /// Ownership: with `transferOwnership`, instances in the value that own their objects stop
    /// owning them, and the instances that are read from the bytes will own them. On failure:
    /// returns an empty buffer, and no ownership changes. This holds for nil, a host function, a
    /// table that contains itself, and a value that exceeds `setSerializationLimit`; also for an
    /// error of the interpreter, which is logged (tag "LuaEnvironment"). Format:
    /// docs/script-value-bytes.md.
    tbMemory::Buffer
    serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership);

    /// Returns a handle on the value that `bytes` describe: a script function or, for all other
    /// values, a script object.
    ///
    /// Requires: bytes with instances or functions come from `serializeScriptObject` in this
    /// process, because their pointers and code are trusted. Other bytes may be anything.
    /// Ownership: each call takes the objects that the bytes own. If the host reads such bytes
    /// twice, their objects are destroyed twice. On failure: returns an empty handle and takes no
    /// ownership. This holds for bytes that describe no value; also for an error of the
    /// interpreter, which is logged (tag "LuaEnvironment"). Format: docs/script-value-bytes.md.
    ///
    /// @code
    /// const ScriptObjectReference state = environment.getVar("state");
    /// const tbMemory::Buffer bytes = environment.serializeScriptObject(state, false);
    /// const ScriptObjectReference copy = other.deserializeScriptObject(bytes);
    /// other.setVar("state", copy);
    /// @endcode
    ScriptObjectReference deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes);

    /// Sets how many bytes `serializeScriptObject` writes at most, 256 MiB unless a host sets
    /// another limit. A value of more bytes is logged (tag "LuaEnvironment") and results in an
    /// empty buffer.
    ///
    /// Tables that a value reaches twice are written twice, so one line of script can create a
    /// small value that takes any number of bytes. The limit stays when the interpreter changes;
    /// copies of an environment share it, as they share the interpreter.
    void setSerializationLimit(std::size_t bytes);

    /// Returns that limit.
    std::size_t getSerializationLimit() const;

    /// Declares the host function `name` as a global and returns it, unbound.
    ///
    /// A name that was declared before is logged; its function is reset and returned. A function of
    /// an earlier interpreter is installed in the present one. On failure: returns null for a new
    /// name if there is no interpreter or the global cannot be set; the name still counts as
    /// declared. A name that was declared before returns its function. Ownership: the
    /// environment's. Valid until: the environment is destroyed.
    ///
    /// @code
    /// Function* const onEvent = environment.setFunc("onEvent");
    /// onEvent->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    /// @endcode
    Function* setFunc(const tbMemory::StringView& name);

    /// Returns whether a function of that name was declared. All bytes of the name count.
    bool isFuncSet(const tbMemory::StringView& name) const;

    /// Returns the function declared under `name`, null if there is none.
    Function* getFunc(const tbMemory::StringView& name) const;

    /// Declares the user type `name` and returns it, without methods and fields.
    ///
    /// A plain name declares a global. A qualified name, "a::b::T", declares `T` in namespace `b`
    /// of namespace `a`, and the namespaces that are missing. A name that was declared before is
    /// logged; its type is cleared and returned. A type or namespace of an earlier interpreter is
    /// installed in the present one. On failure: returns null, as `setFunc` does. A plain name
    /// still counts as declared. Ownership: the environment's, or that of the namespace. Valid
    /// until: the environment is destroyed or the namespace released.
    UserType* setUserType(const tbMemory::StringView& name);

    /// Returns whether a user type of that plain or qualified name was declared.
    bool isUserTypeSet(const tbMemory::StringView& name) const;

    /// Returns the user type of that plain or qualified name, null if there is none. Declares
    /// nothing.
    UserType* getUserType(const tbMemory::StringView& name) const;

    /// Declares the namespace `name` and returns it. Names, failure and ownership are as for
    /// `setUserType`; a namespace that was declared before is returned unchanged.
    Namespace* setNamespace(const tbMemory::StringView& name);

    /// Returns whether a namespace of that plain or qualified name was declared.
    bool isNamespaceSet(const tbMemory::StringView& name) const;

    /// Returns the namespace of that plain or qualified name, null if there is none. Declares
    /// nothing.
    Namespace* getNamespace(const tbMemory::StringView& name) const;

private:
    // Counted: operations in progress hold it too, because a script or the log receiver can destroy
    // this object while one of them runs.
    EnvironmentCore* m_core;
};

} // namespace tbScripts
