#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/FunctionParameterType.h"

#include <cstdint>

namespace tbScripts
{

class ScriptObjectInterpreterReference;
class ScriptObjectView;

namespace lua
{
class LuaScriptObjectInterpreterReference;
}

/// Keeps a value of a script for the host.
///
/// Handles share a block that holds the interpreter's side of the value. As long as one handle on
/// it exists, the interpreter keeps the value alive. A handle may outlive its environment: it then
/// behaves as an empty one and releases nothing. The count is not atomic.
class TBSCRIPTS_API ScriptObjectReference
{
public:
    /// Makes an empty handle.
    ScriptObjectReference();

    /// Makes a handle on what `reference` keeps alive; null makes an empty one.
    ///
    /// Ownership: `reference` belongs to the handle and its copies from here on.
    explicit ScriptObjectReference(ScriptObjectInterpreterReference* reference);

    /// Anchors the value that `view` looks at; empty if the view looks at nothing.
    explicit ScriptObjectReference(const ScriptObjectView& view);

    /// Shares the value of `other`.
    ScriptObjectReference(const ScriptObjectReference& other);

    /// Kept: shares the value as the copy does. `other` is not emptied.
    ScriptObjectReference(ScriptObjectReference&& other) noexcept;

    /// Gives up the own value and shares that of `other`.
    ScriptObjectReference& operator=(const ScriptObjectReference& other);

    /// Swaps the values of both.
    ScriptObjectReference& operator=(ScriptObjectReference&& other) noexcept;

    /// Anchors the value that `view` looks at.
    ///
    /// Kept: if other handles share the block, they see the new value too, and the count starts
    /// again at 1. A view that looks at nothing leaves their value as it is.
    ScriptObjectReference& operator=(const ScriptObjectView& view);

    ~ScriptObjectReference();

    /// Returns the interpreter's side of the value, null for an empty handle.
    ///
    /// Valid until: the last handle that shares the value is gone or given another value.
    ScriptObjectInterpreterReference* getInterpreterReference() const;

    /// Returns the kind of the value, `PARAM_TYPE_VOID` for an empty handle.
    FUNCTION_PARAMETER_TYPE getType() const;

    /// Returns how many handles share the value. Counted anew from 1 after a view was assigned.
    std::uint32_t getUseCount() const;

private:
    friend class lua::LuaScriptObjectInterpreterReference; // makes values inside of blocks
    friend class FunctionParameter; // hands out EMPTY for parameters that hold no reference

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
