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
/// Lives outside of the work that the boundary contains, so that nothing is lost when that is
/// broken off. It then has no bytes, and no instance has changed its owner.
class LuaValueWriter
{
public:
    /// With `transferOwnership`, what reads the bytes will own the instances that the script owns.
    LuaValueWriter(const LuaStateSlot& slot, bool transferOwnership);

    /// Writes the value on top of the stack. May raise. Stack: some values of its own stay.
    void write(lua_State* state);

    /// Returns the bytes; none if there is no record for the value, or if it contains itself.
    tbMemory::Buffer takeBuffer();

private:
    // The table that is being written and those around it are open. Each is on the stack with its
    // current key as long as there is room, and deeper ones in a table of ours: values nest deeper
    // than any stack.
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
    tbMemory::Buffer m_buffer; // the bytes of a value that was written to its end

    std::vector<const void*> m_openTables;
    std::size_t m_markDepth;     // see `_openTable`
    std::size_t m_residentDepth; // so many open tables stay on the stack
    int m_savedIndex;            // of the table that keeps the deeper ones and their keys
    int m_ownersIndex;           // of the table with the instances that are to lose their objects
    int m_ownerCount;
};

} // namespace tbScripts::lua
