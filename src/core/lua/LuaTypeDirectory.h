#pragma once

#include "core/lua/LuaAddressMap.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaOwnedObjects.h"

#include <tbMemory/String.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace tbScripts::lua
{

/// What makes a user type this type and no other: the table that its instances have as metatable.
/// Types that share a table share the identity (docs/decisions/0018-two-types-of-one-name.md).
struct LuaTypeIdentity : std::enable_shared_from_this<LuaTypeIdentity>
{
    LuaTypeIdentity(const void* typeTable, const tbMemory::String& name)
        : fullName(name)
        , table(typeTable)
    {
    }

    const tbMemory::String fullName;
    const void* const table;
    bool isReplaced = false; // a type of this name was declared later, with a table of its own
    int partsKey =
        LUA_NOREF; // registry slot of what LuaTypeTable.h calls the parts, while they exist
    LuaOwnedObjects owned;
};

/// The types of one state whose tables exist, by their tables and by their names.
class LuaTypeDirectory
{
public:
    /// Adds `type`. An earlier type of its name is replaced from then on.
    ///
    /// Requires: `type` stays at its address until `remove`, and no other has its table.
    void add(LuaTypeIdentity& type)
    {
        m_types.reserve();
        _setLatest(type);
        m_types.set(type.table, &type);
    }

    /// Removes `type`, if it was added. Allocates nothing.
    void remove(const LuaTypeIdentity& type)
    {
        if (find(type.table) == &type)
            m_types.remove(type.table);
        const auto latest = m_latest.find(_keyOf(type));
        if (latest != m_latest.end() && latest->second == &type)
            m_latest.erase(latest);
    }

    /// Returns the type whose table this is, null if there is none.
    LuaTypeIdentity* find(const void* table) const { return m_types.find(table); }

    /// Calls `use` with each type. It must add and remove none.
    template <typename Use>
    void forEach(Use&& use) const
    {
        m_types.forEach([&use](const LuaTypeIdentity* type) { use(*type); });
    }

private:
    static std::string_view _keyOf(const LuaTypeIdentity& type)
    {
        return {type.fullName.data(), type.fullName.size()};
    }

    void _setLatest(LuaTypeIdentity& type)
    {
        const auto [known, isNew] = m_latest.try_emplace(_keyOf(type), &type);
        if (isNew)
            return;
        known->second->isReplaced = true;
        auto node = m_latest.extract(known); // its key is a part of the replaced type
        node.key() = _keyOf(type);
        node.mapped() = &type;
        m_latest.insert(std::move(node));
    }

    LuaAddressMap<LuaTypeIdentity> m_types;                          // by their tables
    std::unordered_map<std::string_view, LuaTypeIdentity*> m_latest; // by their full names
};

} // namespace tbScripts::lua
