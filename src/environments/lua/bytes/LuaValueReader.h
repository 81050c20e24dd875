#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "environments/lua/bytes/LuaRecentKeys.h"
#include "environments/lua/bytes/LuaStringsAhead.h"

#include "tbScripts/FunctionParameterType.h"

#include <tbMemory/BufferView.h>
#include <tbMemory/StringView.h>

#include <array>
#include <cstddef>
#include <unordered_set>

namespace tbScripts::lua
{

/// Creates one script value from any bytes. Format: docs/script-value-bytes.md.
///
/// The reader exists outside of the work that the boundary contains, so an error in that work leaks
/// nothing. Ownership changes only in `handOverOwnership`, after the whole value was read: if
/// reading fails, no instance owns its object.
///
/// Why no recursion: docs/decisions/0012-values-without-recursion.md
class LuaValueReader
{
public:
    /// At most so many open tables lie on the interpreter's stack, which also holds the host's
    /// calls.
    static constexpr std::size_t RESIDENT_DEPTH = 64;

    /// Requires: `bytes` do not change while this object exists.
    LuaValueReader(const LuaStateSlot& slot, const tbMemory::BufferView<unsigned char>& bytes);

    /// Returns the kind of the reference that will keep the value alive.
    FUNCTION_PARAMETER_TYPE getType() const;

    /// Returns whether the bytes are a value. May raise.
    /// Stack: +1, the value, if there is one; below it values that the reader needs.
    bool read(lua_State* state);

    /// Sets the ownership flag of the instances whose records transfer ownership. Never raises.
    ///
    /// Requires: `read` succeeded and the caller has popped the value; the values below it are
    /// still on the stack. Stack: +0.
    void handOverOwnership(lua_State* state) const;

private:
    enum class KEY
    {
        NONE,
        ON_STACK,
        DROPPED // not a number: its value is read and dropped with it
    };

    /// Counts of keys in a table.
    struct Fields
    {
        int numberKeys = 0;
        int textKeys = 0;
    };

    /// What the reader knows about one depth.
    struct Level
    {
        Fields expected;           // of the last table at this depth; its neighbours have as many
        KEY keyAround = KEY::NONE; // of the open table, in the table around it
        Fields fieldsAround;       // of the table around, so far
    };

    // The table that is being read and the tables around it are open. Values nest deeper than any
    // stack, so only the outer open tables lie on the stack, each with its key in the table around
    // it; the reader sets such a pair when the inner table ends. Tables deeper than
    // `RESIDENT_DEPTH` lie in the table `saved`; the reader sets their pairs when they begin.
    //
    // Stack while tables are open: [saved] [owners] [recent keys] [strings ahead] [root] [key] ...
    // [table], and the key that has no value yet. A dropped key (NaN) is not on the stack.

    bool _pushFunction(lua_State* state);
    void _prepareSideTables(lua_State* state);
    bool _readTables(lua_State* state);
    bool _readRecord(lua_State* state, unsigned char tag);
    bool _readNumberKey(lua_State* state);
    void _readTextKey(lua_State* state);
    void _dropKey(lua_State* state);
    void _setPair(lua_State* state);
    void _openTable(lua_State* state);
    void _closeTable(lua_State* state);
    void _saveTableAround(lua_State* state);
    int _savedSlot() const;
    bool _pushValue(lua_State* state, unsigned char tag);
    std::size_t _pushText(lua_State* state);
    std::size_t _pushInstance(lua_State* state);

    bool _isFunction() const;

    // Requires: the position is inside the buffer.
    bool _has(std::size_t size) const { return m_size - m_position >= size; }

    tbMemory::StringView _textAt(std::size_t offset) const;

    const LuaStateSlot& m_slot;
    const unsigned char* m_data;
    std::size_t m_size;
    std::size_t m_position; // of the record that is being read

    KEY m_key;       // of the innermost open table, if the key has no value yet
    Fields m_fields; // of the innermost open table, so far
    std::size_t m_depth;
    std::size_t m_residentDepth; // 0 or `RESIDENT_DEPTH`
    std::array<Level, RESIDENT_DEPTH> m_levels;
    LuaRecentKeys m_recentKeys;
    LuaStringsAhead m_stringsAhead;

    int m_savedIndex;                         // of the table with the deeper open tables
    int m_ownersIndex;                        // of the table with the instances that will be owners
    std::unordered_set<void*> m_ownedObjects; // the objects of these instances
};

} // namespace tbScripts::lua
