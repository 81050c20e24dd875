#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/ExecutionResult.h"
#include "tbScripts/FunctionParameter.h"
#include "tbScripts/Interpreter.h"
#include "tbScripts/ScriptObjectReference.h"

#include <tbMemory/Buffer.h>
#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

#include <type_traits>

/// Everything that the library shows to hosts.
namespace tbScripts
{

class EnvironmentCore;
class Function;
class Namespace;
class Script;
class UserType;

/// One named scripting world: globals and host bindings, into which compiled scripts are executed.
///
/// A new environment has no interpreter: every operation that needs one logs a warning (tag
/// "Environment") and gives its neutral value. With one, failures are logged with tag
/// "LuaEnvironment". Nothing is ever thrown but `std::bad_alloc`. Names of globals are plain keys,
/// without path syntax, and end at their first NUL.
///
/// A host that calls scripts which call the host again may do so 200 calls deep, less on a thread
/// with a small stack; the next one fails with "C stack overflow". An environment that is destroyed
/// from inside its own call takes its interpreter and bindings with it when the outermost call
/// returns.
class TBSCRIPTS_API Environment
{
public:
    /// Makes an environment without name and interpreter.
    Environment();

    ///@{
    /// Makes a second handle on the world of `other`.
    ///
    /// Kept: a copy shares interpreter and bindings with `other`. They are torn down once, with the
    /// last copy. What is declared later is known only to the copy that it was declared through.
    Environment(const Environment& other);
    Environment& operator=(const Environment& other);
    ///@}

    /// Ends the world, if no copy shares it: functions, globals, namespaces and user types go, then
    /// the interpreter. Finalisers and destructors run meanwhile, and are refused what they ask of
    /// this environment.
    ~Environment();

    /// Returns the name; empty at first. It is for messages and for the host.
    ///
    /// Valid until: the name changes or the environment is destroyed.
    tbMemory::StringView getName() const;

    /// Replaces the name. A registry that files this environment is not told.
    void setName(const tbMemory::StringView& name);

    /// Returns the outcome of the last `execute` or `callScriptFunction`.
    ///
    /// Valid until: the environment is destroyed. A change of interpreter resets what it shows.
    const ExecutionResult& getLastExecutionResult() const;

    /// Throws the present interpreter away, with all globals, and starts `interpreter`.
    ///
    /// Declared functions stay registered but do nothing until they are declared again.
    /// On failure: any value but `INTERPRETER_LUA`, none included, is logged and leaves the
    /// environment without interpreter; so does a lack of memory. Refused, with a message, while
    /// this environment runs a script. All with tag "Environment".
    void setEnvironmentFor(INTERPRETER interpreter);

    /// Runs the compiled form of `script` and returns whether it ended without an error. Values
    /// that it returns are dropped.
    ///
    /// On failure: logged; `getLastExecutionResult` says why.
    bool execute(const Script& script);

    /// Runs two full collections. A finaliser that raises is logged and holds up nothing.
    void requestGarbageCollection();

    ///@{
    /// Sets global `name`. A null text stores nil; a text ends at its first NUL.
    void setVar(const tbMemory::StringView& name, bool value);
    void setVar(const tbMemory::StringView& name, int value);
    void setVar(const tbMemory::StringView& name, float value);
    void setVar(const tbMemory::StringView& name, double value);
    void setVar(const tbMemory::StringView& name, const char* value);
    void setVar(const tbMemory::StringView& name, const tbMemory::StringView& value);
    ///@}

    /// Sets global `name` to the value behind `value`; an empty reference, or one of another
    /// environment, stores nil.
    void setVar(const tbMemory::StringView& name, const ScriptObjectReference& value);

    /// Not offered: a pointer would be taken for a `bool`. Use `setObject`.
    template <
        typename T,
        typename = std::enable_if_t<!std::is_same<std::remove_cv_t<T>, char>::value>>
    void setVar(const tbMemory::StringView& name, T* value) = delete;

    /// Sets global `name` to `object`, seen by scripts as an instance of `userTypeName`; nil if
    /// `object` is null. A name of no declared type gives an instance without methods.
    ///
    /// Ownership: the host keeps `object`.
    void setObject(
        const tbMemory::StringView& name, const tbMemory::StringView& userTypeName, void* object);

    /// Returns whether global `name` is anything but nil.
    bool isVarSet(const tbMemory::StringView& name) const;

    ///@{
    /// Returns global `name`, or `defaultValue` if it is of another kind. Numbers are read from
    /// numeric texts too; a truth value only from a truth value. The `int` form drops the fraction
    /// and keeps the low 32 bits.
    bool getVar(const tbMemory::StringView& name, bool defaultValue) const;
    int getVar(const tbMemory::StringView& name, int defaultValue) const;
    float getVar(const tbMemory::StringView& name, float defaultValue) const;
    double getVar(const tbMemory::StringView& name, double defaultValue) const;
    ///@}

    ///@{
    /// Returns the text in global `name`, all of its bytes, or that of a number; `defaultValue` for
    /// other values.
    ///
    /// Valid until: the script's value is collected; the text of a number, until the next such
    /// call. The default is given back as it came.
    tbMemory::StringView getVar(const tbMemory::StringView& name, const char* defaultValue) const;
    tbMemory::StringView
    getVar(const tbMemory::StringView& name, const tbMemory::StringView& defaultValue) const;
    ///@}

    /// Returns a handle on global `name`, an empty one for nil, functions and coroutines. Functions
    /// are obtained through `getScriptFunction`.
    ScriptObjectReference getVar(const tbMemory::StringView& name) const;

    /// Returns the host object behind global `name` if it is an instance of `userTypeName`, else
    /// null. A null `userTypeName` skips the test of the type.
    void*
    getObject(const tbMemory::StringView& name, const tbMemory::StringView& userTypeName) const;

    /// Returns a handle on the script function in global `name`, an empty one for other values.
    ScriptObjectReference getScriptFunction(const tbMemory::StringView& name) const;

    /// Calls `function` with `inputs` and reads its results into `outputs`; returns whether the
    /// call ended without an error.
    ///
    /// The kind of each output says what is expected. Results beyond the outputs are dropped,
    /// outputs beyond the results stay as they are. A result of another kind is logged (tag
    /// "LuaEnvironmentStrategy") and ends the reading: from that output on all stay untouched. It
    /// is no failure of the call.
    /// On failure: logged; `getLastExecutionResult` says why; the outputs stay as they are, unless
    /// memory runs out while they are read.
    bool callScriptFunction(
        const ScriptObjectReference& function,
        const tbMemory::BufferView<FunctionParameter>& inputs,
        tbMemory::BufferView<FunctionParameter>& outputs);

    /// Returns the value of `object` as bytes, for this process only: pointers to host objects are
    /// in them as they are.
    ///
    /// With `transferOwnership` the instances in it that own their objects stop owning them, and
    /// what is read from the bytes will own them. Functions inside of tables are left out.
    ///
    /// On failure: an empty buffer, and no owner has changed. So for nil, a host function, a table
    /// that contains itself; for an error of the interpreter too, which is logged (tag
    /// "LuaEnvironment").
    /// Format: docs/script-value-bytes.md.
    tbMemory::Buffer
    serializeScriptObject(const ScriptObjectReference& object, bool transferOwnership);

    /// Returns a handle on the value that `bytes` describe: a script function or, for all else, a
    /// script object.
    ///
    /// Requires: `bytes` come from `serializeScriptObject` in this process, as far as they hold
    /// instances or functions, whose pointers and code are trusted. All others may be anything.
    /// Each call takes over what the bytes own: objects of bytes that are read twice are destroyed
    /// twice.
    /// On failure: an empty handle, and nothing is taken over. So for bytes that describe nothing;
    /// for an error of the interpreter too, which is logged (tag "LuaEnvironment").
    /// Format: docs/script-value-bytes.md.
    ScriptObjectReference deserializeScriptObject(const tbMemory::BufferView<unsigned char>& bytes);

    /// Declares the host function `name` as a global and returns it, unbound.
    ///
    /// A name declared before is logged, and its function is returned as new; if it was made for
    /// an earlier interpreter it is installed in the present one.
    /// On failure: a new name gives null without interpreter, or if the global cannot be set; it
    /// counts as declared all the same. A name declared before gives the function that it has.
    /// Ownership: the environment's.
    /// Valid until: the environment is destroyed.
    Function* setFunc(const tbMemory::StringView& name);

    /// Returns whether a function of that name was declared. The whole text is the key.
    bool isFuncSet(const tbMemory::StringView& name) const;

    /// Returns the function declared under `name`, null if there is none.
    Function* getFunc(const tbMemory::StringView& name) const;

    /// Declares the user type `name` and returns it, without methods and fields.
    ///
    /// A plain name makes a global. A qualified one, "a::b::T", declares `T` in namespace `b` of
    /// namespace `a`; namespaces on the way are declared if they are missing. A name declared
    /// before is logged, and its type is returned cleared; if it, or a namespace on the way, was
    /// made for an earlier interpreter it is installed in the present one.
    /// On failure: null, as with functions. A plain name counts as declared all the same.
    /// Ownership: the environment's, or that of the namespace.
    /// Valid until: the environment is destroyed or the namespace released.
    UserType* setUserType(const tbMemory::StringView& name);

    /// Returns whether a user type of that plain or qualified name was declared.
    bool isUserTypeSet(const tbMemory::StringView& name) const;

    /// Returns the user type of that plain or qualified name, null if there is none. Declares
    /// nothing.
    UserType* getUserType(const tbMemory::StringView& name) const;

    /// Declares the namespace `name` and returns it. Plain and qualified names, failure and
    /// ownership are as with user types; a namespace declared before is returned as it is.
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
