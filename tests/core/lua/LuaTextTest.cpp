#include "core/lua/LuaText.h"

#include "support/LuaStateFixture.h"

#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

class LuaTextTest : public LuaStateFixture
{
protected:
    // The text on top of the stack, which is popped.
    std::string popText()
    {
        std::size_t size = 0;
        const char* const data = lua_tolstring(state(), -1, &size);
        const std::string text = data ? std::string(data, size) : "no text";
        lua_pop(state(), 1);
        return text;
    }
};

TEST_F(LuaTextTest, EndsAtItsFirstZero)
{
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("one\0two\0", 8)), "one");
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("\0one", 4)), "");
}

TEST_F(LuaTextTest, EndsAtTheEndOfItsView)
{
    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView("onetwo", 3)), "one");
}

TEST_F(LuaTextTest, EveryZeroOfEveryLengthIsFound)
{
    for (std::size_t size = 0; size < 140; ++size)
    {
        std::string text(size, '\x80'); // its top bit set, as the search for zeros looks at those
        EXPECT_FALSE(lua::holdsNul(text.data(), size)) << size;
        for (std::size_t position = 0; position < size; ++position)
        {
            text[position] = '\0';
            EXPECT_TRUE(lua::holdsNul(text.data(), size)) << size << ", " << position;
            EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView(text.data(), size)).size(), position);
            text[position] = '\x01';
        }
    }
}

TEST_F(LuaTextTest, ReadsNoByteBehindAViewThatIsNotTerminated)
{
    const std::vector<char> bytes = {'o', 'n', 'e'};

    EXPECT_EQ(lua::upToFirstNul(tbMemory::StringView(bytes.data(), bytes.size())), "one");
}

TEST_F(LuaTextTest, NullTextStaysNull)
{
    EXPECT_TRUE(lua::upToFirstNul(tbMemory::StringView()).isNull());
    EXPECT_FALSE(lua::upToFirstNul("").isNull());
}

TEST_F(LuaTextTest, NameIsPushedUpToItsFirstZero)
{
    lua::pushName(state(), tbMemory::StringView("one\0two", 7));

    EXPECT_EQ(popText(), "one");
}

TEST_F(LuaTextTest, NullNameIsPushedAsTheEmptyName)
{
    lua::pushName(state(), tbMemory::StringView());

    ASSERT_EQ(lua_type(state(), -1), LUA_TSTRING);
    EXPECT_EQ(popText(), "");
}

TEST_F(LuaTextTest, NullTextIsPushedAsNil)
{
    lua::pushText(state(), tbMemory::StringView());

    EXPECT_TRUE(lua_isnil(state(), -1));
    lua_settop(state(), 0);
}

TEST_F(LuaTextTest, EmptyTextIsPushedAsAText)
{
    lua::pushText(state(), "");

    ASSERT_EQ(lua_type(state(), -1), LUA_TSTRING);
    EXPECT_EQ(popText(), "");
}

TEST_F(LuaTextTest, TextIsPushedUpToItsFirstZero)
{
    lua::pushText(state(), tbMemory::StringView("one\0two", 7));

    EXPECT_EQ(popText(), "one");
}

TEST_F(LuaTextTest, TextInTheInterpreterIsReadWithAllItsBytes)
{
    push("return 'one\\0two\\255'");

    EXPECT_EQ(lua::textAt(state(), -1), tbMemory::StringView("one\0two\xff", 8));
    lua_settop(state(), 0);
}

TEST_F(LuaTextTest, NumberIsReadAsAText)
{
    push("return 2.5");

    EXPECT_EQ(lua::textAt(state(), -1), "2.5");
    EXPECT_EQ(lua_type(state(), -1), LUA_TSTRING);
    lua_settop(state(), 0);
}

TEST_F(LuaTextTest, ValueWithoutTextIsReadAsNull)
{
    push("return {}");

    EXPECT_TRUE(lua::textAt(state(), -1).isNull());
    lua_settop(state(), 0);
}

} // namespace tbScripts::test
