#include "core/ByteWords.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

// Longer than every word, and than what the C library searches.
constexpr std::size_t LONGEST = 140;

// On the heap and of exactly that size, so that the sanitizer sees a byte read outside.
std::vector<char> bytesOf(std::size_t size, char byte)
{
    return std::vector<char>(size, byte);
}

const unsigned char* unsignedOf(const std::vector<char>& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

} // namespace

TEST(ByteWordsTest, WordIsLoadedFromAnyAddress)
{
    const std::vector<char> bytes = {'x', '\x01', '\x01', '\x01', '\x01'};

    EXPECT_EQ(loadWord<std::uint32_t>(bytes.data() + 1), 0x01010101U);
}

TEST(ByteWordsTest, ZeroIsFoundInEachByteOfAWord)
{
    // All bits but those of one byte, and then with that byte's own lowest and highest bit.
    for (unsigned shift = 0; shift < 64; shift += 8)
    {
        const std::uint64_t others = ~(std::uint64_t{0xFF} << shift);
        EXPECT_TRUE(hasZeroByte(others)) << shift;
        EXPECT_FALSE(hasZeroByte(others | (std::uint64_t{0x01} << shift))) << shift;
        EXPECT_FALSE(hasZeroByte(others | (std::uint64_t{0x80} << shift))) << shift;
    }
    EXPECT_TRUE(hasZeroByte(std::uint32_t{0x01010100U}));
    EXPECT_TRUE(hasZeroByte(std::uint32_t{0x00808080U}));
    EXPECT_FALSE(hasZeroByte(std::uint32_t{0x01010101U}));
    EXPECT_FALSE(hasZeroByte(std::uint32_t{0x80808080U}));
}

TEST(ByteWordsTest, EveryZeroOfEveryLengthIsFound)
{
    for (std::size_t size = 0; size < LONGEST; ++size)
    {
        std::vector<char> bytes = bytesOf(size, '\x80'); // whose top bit the search looks at
        EXPECT_FALSE(holdsZero(bytes.data(), size)) << size;
        for (std::size_t position = 0; position < size; ++position)
        {
            bytes[position] = '\0';
            EXPECT_TRUE(holdsZero(bytes.data(), size)) << size << ", " << position;
            bytes[position] = '\x01';
        }
    }
}

TEST(ByteWordsTest, EveryDifferenceOfEveryLengthIsFound)
{
    for (std::size_t size = 0; size < LONGEST; ++size)
    {
        const std::vector<char> one = bytesOf(size, 'a');
        std::vector<char> other = one;
        EXPECT_TRUE(areSameBytes(one.data(), other.data(), size)) << size;
        for (std::size_t position = 0; position < size; ++position)
        {
            other[position] = 'b';
            EXPECT_FALSE(areSameBytes(one.data(), other.data(), size)) << size << ", " << position;
            other[position] = 'a';
        }
    }
}

TEST(ByteWordsTest, EveryDifferenceOfQuadsIsFound)
{
    for (std::size_t size = 0; size < LONGEST; size += QUAD)
    {
        const std::vector<char> one = bytesOf(size, 'a');
        std::vector<char> other = one;
        EXPECT_TRUE(areSameQuads(unsignedOf(one), unsignedOf(other), size)) << size;
        for (std::size_t position = 0; position < size; ++position)
        {
            other[position] = 'b';
            EXPECT_FALSE(areSameQuads(unsignedOf(one), unsignedOf(other), size))
                << size << ", " << position;
            other[position] = 'a';
        }
    }
}

TEST(ByteWordsTest, FirstQuadWithAZeroEndsTheSize)
{
    for (std::size_t room = 0; room < LONGEST; ++room)
    {
        std::vector<char> bytes = bytesOf(room, '\x80');
        EXPECT_EQ(sizeThroughQuadWithZero(unsignedOf(bytes), room), 0U) << room;
        for (std::size_t position = room; position-- > 0;) // those behind stay zero
        {
            bytes[position] = '\0';
            const std::size_t end = (position / QUAD + 1) * QUAD;
            EXPECT_EQ(sizeThroughQuadWithZero(unsignedOf(bytes), room), end <= room ? end : 0)
                << room << ", " << position;
        }
    }
}

} // namespace tbScripts::test
