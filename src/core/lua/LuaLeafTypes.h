#pragma once

// The words that compiled script code compares with the metatable of an instance
// (docs/decisions/0034-compiled-leaves.md).

#include "tbScripts/typed/Call.h"

#include <cstdint>
#include <unordered_map>

namespace tbScripts::lua
{

/// For each type of the host that was bound or that a leaf expects: the table of the user type
/// whose instances its objects are now. Script code reads these words without asking, so they keep
/// their addresses as long as this object, also after the end of the type.
class LuaLeafTypes
{
public:
    using Word = std::uint64_t;

    /// What the word holds while there is no such type: no table has an odd address.
    static constexpr Word NO_TABLE = 1;

    /// Returns the word of `type`.
    const Word* findWord(const typed::TypeId& type)
    {
        return &m_words.emplace(&type, NO_TABLE).first->second;
    }

    /// Makes `table` the one of `type`, and of no other type: two types of one name have one table.
    void setTable(const typed::TypeId& type, const void* table)
    {
        forgetTable(table);
        m_words[&type] = _wordOf(table);
    }

    /// From here on `type` has no table. Allocates nothing.
    void forgetType(const typed::TypeId& type)
    {
        const auto known = m_words.find(&type);
        if (known != m_words.end())
            known->second = NO_TABLE;
    }

    /// From here on no type has this table. Allocates nothing.
    void forgetTable(const void* table)
    {
        for (auto& [type, word] : m_words)
        {
            if (word == _wordOf(table))
                word = NO_TABLE;
        }
    }

private:
    static Word _wordOf(const void* table) { return reinterpret_cast<std::uintptr_t>(table); }

    std::unordered_map<const typed::TypeId*, Word> m_words; // whose elements stay where they are
};

} // namespace tbScripts::lua
