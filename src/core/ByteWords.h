#pragma once

// Compares and searches bytes a word at a time.
//
// Names and keys are mostly shorter than 32 bytes. For such, a call of the C library takes longer
// than the work, and the compiler does not replace a call whose length it does not know. These
// functions are on the way of every call between host and script.
//
// Words are copied from bytes at any address. Where a size is no multiple of the word's, the last
// word overlaps the one before, so that there is no remainder to go through byte by byte.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tbScripts
{

/// Returns the word that begins at `bytes`, in the machine's order.
template <typename Word>
Word loadWord(const void* bytes)
{
    Word word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    return word;
}

/// Returns whether one of the bytes of `word` is 0: only there the subtraction of 1 from each byte
/// sets a highest bit that was not set before.
template <typename Word>
constexpr bool hasZeroByte(Word word)
{
    constexpr Word LOWEST_BITS = static_cast<Word>(~Word{0}) / 0xFFU;
    constexpr Word HIGHEST_BITS = LOWEST_BITS << 7U;
    return ((word - LOWEST_BITS) & ~word & HIGHEST_BITS) != 0;
}

/// Returns whether one of `size` bytes is 0.
inline bool holdsZero(const char* bytes, std::size_t size)
{
    constexpr std::size_t LONG = 64; // from here on the C library is faster
    constexpr std::size_t WORD = sizeof(std::uint64_t);
    constexpr std::size_t HALF = sizeof(std::uint32_t);
    const auto hasZeroAt = [bytes](auto word, std::size_t position)
    { return hasZeroByte(loadWord<decltype(word)>(bytes + position)); };

    if (size >= LONG)
        return std::memchr(bytes, '\0', size) != nullptr;
    if (size >= WORD)
    {
        for (std::size_t i = 0; i + WORD < size; i += WORD)
        {
            if (hasZeroAt(std::uint64_t(), i))
                return true;
        }
        return hasZeroAt(std::uint64_t(), size - WORD);
    }
    if (size >= HALF)
        return hasZeroAt(std::uint32_t(), 0) || hasZeroAt(std::uint32_t(), size - HALF);
    return size > 0 && (bytes[0] == 0 || bytes[size / 2] == 0 || bytes[size - 1] == 0);
}

/// Returns whether the `size` bytes at `one` and `other` are the same.
inline bool areSameBytes(const char* one, const char* other, std::size_t size)
{
    constexpr std::size_t WORD = sizeof(std::uint64_t);
    constexpr std::size_t HALF = sizeof(std::uint32_t);
    const auto areSameAt = [one, other](auto word, std::size_t position)
    {
        using Word = decltype(word);
        return loadWord<Word>(one + position) == loadWord<Word>(other + position);
    };

    if (size >= WORD)
    {
        for (std::size_t i = 0; i + WORD < size; i += WORD)
        {
            if (!areSameAt(std::uint64_t(), i))
                return false;
        }
        return areSameAt(std::uint64_t(), size - WORD);
    }
    if (size >= HALF)
        return areSameAt(std::uint32_t(), 0) && areSameAt(std::uint32_t(), size - HALF);
    return size == 0 || (one[0] == other[0] && one[size / 2] == other[size / 2] &&
                         one[size - 1] == other[size - 1]);
}

/// Bytes that are whole words of 4, as the records of script values are.
constexpr std::size_t QUAD = sizeof(std::uint32_t);

/// Returns whether the `size` bytes at `one` and `other` are the same.
///
/// Requires: `size` is a multiple of `QUAD`.
inline bool areSameQuads(const unsigned char* one, const unsigned char* other, std::size_t size)
{
    for (std::size_t i = 0; i < size; i += QUAD)
    {
        if (loadWord<std::uint32_t>(one + i) != loadWord<std::uint32_t>(other + i))
            return false;
    }
    return true;
}

/// Returns the number of bytes up to the end of the first whole quad that holds a 0; 0 if none of
/// those in the `room` bytes does.
inline std::size_t sizeThroughQuadWithZero(const unsigned char* bytes, std::size_t room)
{
    for (std::size_t i = 0; room - i >= QUAD; i += QUAD)
    {
        if (hasZeroByte(loadWord<std::uint32_t>(bytes + i)))
            return i + QUAD;
    }
    return 0;
}

} // namespace tbScripts
