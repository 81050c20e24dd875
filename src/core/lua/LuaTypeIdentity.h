#pragma once

#include "tbScripts/typed/Call.h"

#include <tbMemory/String.h>

#include <vector>

namespace tbScripts::lua
{

/// A base class of a type of the host, as the typed layer declared it.
struct LuaTypeBase
{
    const typed::TypeId* type;
    void* (*toBase)(void* object);
};

/// What the library knows of a user type by the address of its table.
struct LuaTypeIdentity
{
    explicit LuaTypeIdentity(const tbMemory::StringView& name)
        : fullName(name)
    {
    }

    LuaTypeIdentity(const LuaTypeIdentity&) = delete;
    LuaTypeIdentity& operator=(const LuaTypeIdentity&) = delete;

    tbMemory::String fullName;
    const typed::TypeId* type = nullptr; // of the host's type; null unless it was bound by type
    std::vector<LuaTypeBase> bases;

protected:
    ~LuaTypeIdentity() = default;
};

} // namespace tbScripts::lua
