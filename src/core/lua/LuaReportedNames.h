#pragma once

#include <tbMemory/StringView.h>

#include <array>
#include <cstddef>
#include <functional>
#include <string_view>

namespace tbScripts::lua
{

/// Names that a message was logged for, so that it is logged once for each. Needs no memory: a host
/// may take names from its scripts, which come up with any number of any length.
class LuaReportedNames
{
public:
    /// Notes `name`. Returns false if it is noted already, or if there is no room for it.
    bool add(const tbMemory::StringView& name)
    {
        const std::size_t hash = std::hash<std::string_view>()(name);
        for (std::size_t i = 0; i < m_count; ++i)
        {
            if (m_hashes[i] == hash)
                return false;
        }
        if (m_count == m_hashes.size())
            return false;
        m_hashes[m_count++] = hash;
        return true;
    }

private:
    static constexpr std::size_t CAPACITY = 64;

    std::array<std::size_t, CAPACITY> m_hashes{};
    std::size_t m_count = 0;
};

} // namespace tbScripts::lua
