// Texts that are looked up a few at a time, compared with what stands at their place.

#include "environments/lua/bytes/LuaStringsAhead.h"

#include "support/LuaStateFixture.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

using Bytes = std::vector<unsigned char>;

// Several records of texts among all others. Those behind the instance are found from there.
const Bytes RECORDS{'{', 0,   0,   0,   'k', 's', 0,   0,   's', 'a', 0, 0, 'i', 's', 's', 's',
                    's', 's', 's', 's', 's', 's', 's', 's', 's', 'b', 0, 0, 'k', 'l', 'o', 'n',
                    'g', 0,   0,   0,   's', 'c', 'd', 'e', 'f', 0,   0, 0, 'b', 1,   0,   0,
                    'u', 1,   's', 'T', 0,   0,   0,   0,   1,   2,   3, 4, 5,   6,   7,   8,
                    'k', 'n', 0,   0,   'n', 0,   0,   0,   's', 's', 0, 0, 0,   0,   0,   0,
                    's', 0,   0,   0,   '?', 's', 's', 's', '}', 0,   0, 0, 's', 'z', 'z', 'z'};

std::string textAt(const unsigned char* bytes, std::size_t size, std::size_t position)
{
    const unsigned char* const start = bytes + position + 1;
    return std::string(start, std::find(start, bytes + size, 0));
}

std::size_t sizeOf(const std::string& text)
{
    return (text.size() + 5) / 4 * 4;
}

} // namespace

class LuaStringsAheadTest : public LuaStateFixture
{
protected:
    // Pushes the texts at all aligned places that look like one, from a block of exactly `size`
    // bytes, and returns how many there were.
    int comparePlaces(const Bytes& bytes, std::size_t size, bool isReserved = true)
    {
        const std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
        std::copy_n(bytes.begin(), size, block.get());
        lua::LuaStringsAhead texts(block.get(), size);
        if (isReserved)
            texts.reserve(state());
        int places = 0;
        for (std::size_t position = 0; position < size; position += 4)
        {
            if (block[position] != 's')
                continue;
            ++places;
            const std::size_t taken = texts.push(state(), position);
            const std::string expected = textAt(block.get(), size, position);
            EXPECT_EQ(taken, sizeOf(expected)) << position;
            EXPECT_EQ(top(), expected) << position;
        }
        lua_settop(state(), 0);
        return places;
    }

    std::string top()
    {
        std::size_t size = 0;
        const char* const text = lua_tolstring(state(), -1, &size);
        return std::string(text, size);
    }

    // Returns the records of the texts "0", "1" and so on.
    static Bytes numbered(int count)
    {
        Bytes bytes;
        for (int i = 0; i < count; ++i)
        {
            const std::string text = std::to_string(i);
            bytes.push_back('s');
            bytes.insert(bytes.end(), text.begin(), text.end());
            bytes.resize((bytes.size() + 4) / 4 * 4);
        }
        return bytes;
    }
};

TEST_F(LuaStringsAheadTest, StringsAreThoseAtTheirPlaceWithAndWithoutRoomForThem)
{
    EXPECT_EQ(comparePlaces(RECORDS, RECORDS.size()), 8);
    EXPECT_EQ(comparePlaces(RECORDS, RECORDS.size(), false), 8);
}

TEST_F(LuaStringsAheadTest, MoreTextsThanThereIsRoomForAreFound)
{
    EXPECT_EQ(comparePlaces(numbered(3000), numbered(3000).size()), 3000);
}

TEST_F(LuaStringsAheadTest, TextsFarApartAreFound)
{
    Bytes bytes;
    for (int i = 0; i < 5; ++i)
    {
        bytes.resize(bytes.size() + 5000, 'b');
        bytes.insert(bytes.end(), {'s', 't', 0, 0});
    }

    EXPECT_EQ(comparePlaces(bytes, bytes.size()), 5);
}

TEST_F(LuaStringsAheadTest, TextsMayBeAskedForInAnyOrder)
{
    const Bytes bytes = numbered(10);
    lua::LuaStringsAhead texts(bytes.data(), bytes.size());
    texts.reserve(state());

    for (const std::size_t place : {3U, 3U, 1U, 9U, 0U, 5U, 6U, 2U})
    {
        texts.push(state(), 4 * place);
        EXPECT_EQ(top(), std::to_string(place));
    }

    lua_settop(state(), 0);
}

TEST_F(LuaStringsAheadTest, ReadsNothingBehindTheBytesWhereverTheyEnd)
{
    for (std::size_t size = 1; size <= RECORDS.size(); ++size)
        comparePlaces(RECORDS, size);
}

TEST_F(LuaStringsAheadTest, AnyByteMayBeAnyOther)
{
    Bytes bytes = RECORDS;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        for (int value = 0; value < 256; ++value)
        {
            bytes[i] = static_cast<unsigned char>(value);
            comparePlaces(bytes, bytes.size());
        }
        bytes[i] = RECORDS[i];
    }
}

TEST_F(LuaStringsAheadTest, StackGrowsByTheTextOnly)
{
    const Bytes bytes = numbered(40);
    lua::LuaStringsAhead texts(bytes.data(), bytes.size());
    texts.reserve(state());

    texts.push(state(), 0);

    EXPECT_EQ(lua_gettop(state()), 32 + 1);
    lua_settop(state(), 0);
}

} // namespace tbScripts::test
