#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "environments/lua/bytes/GrowingBytes.h"

#include <tbMemory/Buffer.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <vector>

namespace tbScripts::lua
{

/// Writes one script value as bytes. Format: docs/script-value-bytes.md.
///
/// The writer exists outside of the work that the boundary contains, so an error in that work leaks
/// nothing. After an error the writer has no bytes, and no ownership has changed.
///
/// Why no recursion: docs/decisions/0012-values-without-recursion.md
class LuaValueWriter
{
public:
    /// With `transferOwnership`, the written instances lose the objects that the script owns; the
    /// instances that are read from the bytes will own them.
    /// It writes at most `limit` bytes: `write` throws beyond, as `GrowingBytes` does.
    LuaValueWriter(const LuaStateSlot& slot, bool transferOwnership, std::size_t limit);

    /// Writes the value on top of the stack. May raise. Stack: some values of the writer stay.
    void write(lua_State* state);

    /// Returns the bytes; none if there is no record for the value, or if it contains itself.
    tbMemory::Buffer takeBuffer();

private:
    // The table that is being written and the tables around it are open. Values nest deeper than
    // any stack: as long as there is room, open tables lie on the stack, each with its current key,
    // and deeper ones in the table `saved`.
    //
    // Stack while tables are open: [value] [saved] [owners] [root] [key] ... [table] [key].

    void _prepareSideTables(lua_State* state);
    void _writeValue(lua_State* state, int type);
    bool _writeFunction(lua_State* state);
    bool _writeTables(lua_State* state);
    void _writeKey(lua_State* state);
    bool _openTable(lua_State* state);
    void _closeTable(lua_State* state);
    int _savedSlot() const;
    void _saveParent(lua_State* state);
    void _restoreParent(lua_State* state);
    void _writeInstance(lua_State* state);
    void _releaseOwners(lua_State* state) const;

    void _putTag(unsigned char tag, unsigned char next);
    void _putNumber(unsigned char tag, double number);
    void _putText(unsigned char tag, const tbMemory::StringView& text);
    void _putTypedInstance(void* object, const tbMemory::StringView& typeName);
    void _putUntypedInstance(void* object);

    const LuaStateSlot& m_slot;
    bool m_transferOwnership;
    GrowingBytes m_bytes;
    tbMemory::Buffer m_buffer; // the bytes, after the whole value was written

    std::vector<const void*> m_openTables;
    std::size_t m_markDepth;     // see `_openTable`
    std::size_t m_residentDepth; // at most so many open tables lie on the stack
    int m_savedIndex;            // of the table with the deeper open tables and their keys
    int m_ownersIndex;           // of the table with the instances that will lose their objects
    int m_ownerCount;
};

} // namespace tbScripts::lua
