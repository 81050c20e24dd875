#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"

#include <cstdint>

namespace tbScripts
{

class ScriptObjectInterpreterReference;
class ScriptObjectView;

/// Keeps a script's table or function alive for the host.
///
/// Copies of a handle share the value; the interpreter keeps it alive until the last of them is
/// destroyed. A handle may outlive its environment: it then behaves as an empty handle and releases
/// nothing.
///
/// @code
/// const ScriptObjectReference decide = environment.getScriptFunction("decide"); // once
/// @endcode
///
/// A host function keeps a function that a script passes to it:
///
/// @code
/// onEvent->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
/// onEvent->setFunction(
///     [&listeners](const Parameters& arguments)
///     {
///         listeners.push_back(arguments[0].getScriptObject());
///         return FunctionParameter::VOID;
///     });
/// @endcode
class TBSCRIPTS_API ScriptObjectReference
{
public:
    /// Creates an empty handle.
    ScriptObjectReference();

    /// Creates a handle on the value that `reference` keeps alive; null creates an empty handle.
    ///
    /// Ownership: passes to the handle and its copies.
    explicit ScriptObjectReference(ScriptObjectInterpreterReference* reference);

    /// Keeps the value of `view` alive; an empty view creates an empty handle.
    explicit ScriptObjectReference(const ScriptObjectView& view);

    /// Shares the value of `other`.
    ScriptObjectReference(const ScriptObjectReference& other);

    /// Shares the value of `other`.
    ///
    /// Compatibility: `other` is not emptied (decision 0006).
    ScriptObjectReference(ScriptObjectReference&& other) noexcept;

    /// Releases the present value and shares that of `other`.
    ScriptObjectReference& operator=(const ScriptObjectReference& other);

    /// Swaps the values of both handles.
    ScriptObjectReference& operator=(ScriptObjectReference&& other) noexcept;

    /// Keeps the value of `view` alive.
    ///
    /// Compatibility: handles that share the old value get the new one too, and `getUseCount`
    /// starts again at 1. An empty view leaves their value unchanged (decision 0006).
    ScriptObjectReference& operator=(const ScriptObjectView& view);

    ~ScriptObjectReference();

    /// Returns the interpreter's side of the value, null for an empty handle.
    ///
    /// Valid until: the last handle that shares the value is destroyed or assigned another value.
    ScriptObjectInterpreterReference* getInterpreterReference() const;

    /// Returns the kind of the value, `PARAM_TYPE_VOID` for an empty handle.
    FUNCTION_PARAMETER_TYPE getType() const;

    /// Returns how many handles share the value. The count starts again at 1 when a view is
    /// assigned.
    std::uint32_t getUseCount() const;

private:
    friend struct ScriptObjectReferenceAccess; // creates values inside of blocks
    friend class FunctionParameter; // returns EMPTY for parameters that hold no reference

    struct SharedBlock;

    // An empty handle that costs nothing to hand out and outlives every other object.
    static const ScriptObjectReference EMPTY;
    static SharedBlock PERMANENT_BLOCK;

    explicit constexpr ScriptObjectReference(SharedBlock* block) noexcept;

    // Gives up the block; the last holder also gives the value back to the interpreter.
    void _release() noexcept;

    SharedBlock* m_block; // never null
};

} // namespace tbScripts
