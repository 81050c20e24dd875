#pragma once

#include <array>
#include <cstddef>
#include <stdexcept>

namespace tbScripts::fuzz
{

/// Something that a byte may choose, under a number that stays.
template <typename Value>
struct Case
{
    std::size_t number;
    Value value;
};

/// The cases of one choice. `SIZE`, the number of different bytes, is never changed: a number that
/// no case has today may be given to a new one, and all others keep their meaning.
///
/// Does not compile as a constant if two cases have one number, one is too large, or 0 is missing.
template <std::size_t SIZE, typename Value, std::size_t COUNT>
class Cases
{
public:
    static constexpr std::size_t CAPACITY = SIZE;

    constexpr Cases(const Case<Value> (&cases)[COUNT])
    {
        static_assert(256 % SIZE == 0, "each number is equally frequent");
        for (const Case<Value>& each : cases)
        {
            if (each.number >= SIZE || m_isUsed[each.number])
                throw std::logic_error("a number is too large or used twice");
            m_isUsed[each.number] = true;
            m_values[each.number] = each.value;
        }
        if (!m_isUsed[0])
            throw std::logic_error("0 is what is chosen past the end of the bytes");
    }

    /// Returns the case of a number below `CAPACITY`, or null.
    constexpr const Value* find(std::size_t number) const
    {
        return m_isUsed[number] ? &m_values[number] : nullptr;
    }

private:
    std::array<Value, SIZE> m_values{};
    std::array<bool, SIZE> m_isUsed{};
};

/// Returns the cases as a table of `SIZE` numbers.
template <std::size_t SIZE, typename Value, std::size_t COUNT>
constexpr Cases<SIZE, Value, COUNT> makeCases(const Case<Value> (&cases)[COUNT])
{
    return Cases<SIZE, Value, COUNT>(cases);
}

} // namespace tbScripts::fuzz
