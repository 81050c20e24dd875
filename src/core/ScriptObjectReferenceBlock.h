#pragma once

#include "core/Counted.h"

#include "tbScripts/ScriptObjectInterpreterReference.h"
#include "tbScripts/ScriptObjectReference.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <utility>

namespace tbScripts
{

/// What all handles on one value share (decision 0016). The library's own values live in it, so
/// that a reference is one piece of memory; those that a host makes are pointed at.
///
/// `useCount` starts again at 1 when a view is assigned, for every handle on the block; the count
/// of holders is the true number, and decides when the block is destroyed.
struct ScriptObjectReference::SharedBlock : HolderCount
{
    // Such a value has a callable, whose size depends on the standard library.
    static constexpr std::size_t ROOM_SIZE = sizeof(std::function<void()>) + 4 * sizeof(void*);

    union Room
    {
        constexpr Room() noexcept
            : nothing(0)
        {
        }

        unsigned char nothing;
        alignas(std::max_align_t) unsigned char bytes[ROOM_SIZE];
    };

    constexpr SharedBlock() noexcept = default;

    /// Creates a value inside of the block. Requires: the block has none.
    template <typename Value, typename... Arguments>
    void makeValue(Arguments&&... arguments)
    {
        static_assert(sizeof(Value) <= ROOM_SIZE && alignof(Value) <= alignof(std::max_align_t));
        value = new (room.bytes) Value(std::forward<Arguments>(arguments)...);
        isValueInside = true;
    }

    /// Destroys the value and replaces it by `next`, which may be null.
    void replaceValue(ScriptObjectInterpreterReference* next) noexcept
    {
        ScriptObjectInterpreterReference* const ended = std::exchange(value, next);
        if (std::exchange(isValueInside, false))
            ended->~ScriptObjectInterpreterReference();
        else
            delete ended;
    }

    /// Not a destructor of the block: the permanent block would then be destroyed before the last
    /// static objects that use it.
    static void destroy(SharedBlock* block) noexcept
    {
        block->replaceValue(nullptr);
        delete block;
    }

    ScriptObjectInterpreterReference* value = nullptr; // owned, may be null
    std::uint32_t useCount = 1;
    bool isValueInside = false;
    Room room;
};

/// Creates the library's own values inside of the blocks of references.
struct ScriptObjectReferenceAccess
{
    /// Returns a handle on a new `Value`; both lie in one block of memory.
    template <typename Value, typename... Arguments>
    static ScriptObjectReference make(Arguments&&... arguments)
    {
        ScriptObjectReference reference;
        reference.m_block->makeValue<Value>(std::forward<Arguments>(arguments)...);
        return reference;
    }
};

} // namespace tbScripts
