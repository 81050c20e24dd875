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

/// Makes one script value from bytes, whatever they are. Format: docs/script-value-bytes.md.
///
/// Lives outside of the work that the boundary contains, so that nothing is lost when that is
/// broken off. No instance then owns its object.
class LuaValueReader
{
public:
    /// So many open tables are kept on the stack, where they have to fit beside everything else.
    static constexpr std::size_t RESIDENT_DEPTH = 64;

    /// Requires: `bytes` stay as they are while this lives.
    LuaValueReader(const LuaStateSlot& slot, const tbMemory::BufferView<unsigned char>& bytes);

    /// Returns the kind of reference that keeps the value.
    FUNCTION_PARAMETER_TYPE getType() const;

    /// Returns whether the bytes are a value. May raise.
    /// Stack: +1, the value, if there is one; some values of its own underneath.
    bool read(lua_State* state);

    /// Lets the instances own their objects that were written so. Never raises.
    ///
    /// Requires: the value was read, and is kept elsewhere: on the stack is what `read` left
    /// underneath. Stack: +0.
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

    /// What is known of a depth.
    struct Level
    {
        Fields expected;           // what the last table here had; tables beside it have the same
        KEY keyAround = KEY::NONE; // of the open table, in the one around it
        Fields fieldsAround;       // of that one so far
    };

    // The table that is being read and those around it are open. The outer ones are on the stack,
    // each with the key of the next, which is set at its end. Those deeper than `RESIDENT_DEPTH`
    // are kept in a table of ours, since values nest deeper than any stack, and set at once.
    //
    // Stack while tables are open: [saved] [owners] [recent keys] [texts ahead] [root] [key] ...
    // [table], and the key that has no value yet. A key that is not a number is not there.

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

    // Requires: the position is in the buffer.
    bool _has(std::size_t size) const { return m_size - m_position >= size; }

    tbMemory::StringView _textAt(std::size_t offset) const;

    const LuaStateSlot& m_slot;
    const unsigned char* m_data;
    std::size_t m_size;
    std::size_t m_position; // of the record that is read

    KEY m_key;       // the one that has no value yet, of the innermost open table
    Fields m_fields; // of that table so far
    std::size_t m_depth;
    std::size_t m_residentDepth; // 0 or `RESIDENT_DEPTH`
    std::array<Level, RESIDENT_DEPTH> m_levels;
    LuaRecentKeys m_recentKeys;
    LuaStringsAhead m_stringsAhead;

    int m_savedIndex;                         // of the table that keeps the deeper open tables
    int m_ownersIndex;                        // of the table that keeps the instances below
    std::unordered_set<void*> m_ownedObjects; // of instances that will own them
};

} // namespace tbScripts::lua
