#pragma once

// What a function's instructions store into the tables that its constructors create
// (docs/decisions/0030-empty-slots-of-table-templates.md).

#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tbScripts::lua
{

enum class STORE_KIND
{
    KEY,   // under a string
    INDEX, // under a positive integer
    REST   // all results of a call, or all of `...`, behind the last index
};

/// One value that a table constructor stores after the table was copied from its template.
struct LuaTableStore
{
    std::uint32_t table; // number of the template among the function's constants
    STORE_KIND kind;
    std::uint32_t operand; // of a key the number of the string among the constants; the index
};

/// A function's compiled code, as far as it says what constructors store.
struct LuaFunctionCode
{
    tbMemory::StringView instructions; // 4 bytes each, the lowest first
    tbMemory::StringView variables;    // records of local variables, in the order of their scopes
};

/// Returns what the constructors in `code` store for certain, in order. A constructor is over where
/// its table becomes a local variable, or where something else is stored in its register. So each
/// of these stores runs before anything but the running function can reach the table.
///
/// Why no store is taken that does not run: the values of a constructor are computed by code that
/// may jump, but never across a store of the constructor. A store that takes its key out of a
/// register counts only if the instruction before it, which no jump separates from it, loads a
/// constant into that register.
///
/// Returns nothing for code without constructors with a template.
std::vector<LuaTableStore> findTableStores(const LuaFunctionCode& code);

} // namespace tbScripts::lua
