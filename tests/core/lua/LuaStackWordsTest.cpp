#include "core/lua/LuaStackWords.h"

#include "support/LuaStateFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace tbScripts::test
{

class LuaStackWordsTest : public LuaStateFixture
{
protected:
    using Words = lua::LuaStackWords;

    LuaStackWordsTest()
    {
        if (!Words::isKnown())
            m_isUnknown = true; // of another interpreter: nothing is read in place
    }

    ~LuaStackWordsTest() override { Words::setKnown(!m_isUnknown); }

    void TearDown() override
    {
        lua_settop(state(), 0);
        LuaStateFixture::TearDown();
    }

    bool m_isUnknown = false;
    double m_number = -1.0;
};

TEST_F(LuaStackWordsTest, ReadsFiniteNumbers)
{
    for (const double number : {0.0, -0.0, 1.5, -3.0, 1e308, std::numeric_limits<double>::min()})
    {
        lua_settop(state(), 0);
        lua_pushnumber(state(), number);
        ASSERT_EQ(Words::readNumber(state(), 1, m_number), !m_isUnknown) << number;
        if (!m_isUnknown)
        {
            EXPECT_EQ(m_number, number);
            EXPECT_EQ(std::signbit(m_number), std::signbit(number));
        }
    }
}

TEST_F(LuaStackWordsTest, LeavesAllOtherValuesToTheInterface)
{
    lua_pushnumber(state(), std::numeric_limits<double>::infinity());
    lua_pushnumber(state(), -std::numeric_limits<double>::infinity());
    lua_pushnumber(state(), std::numeric_limits<double>::quiet_NaN());
    lua_pushnil(state());
    lua_pushboolean(state(), 1);
    lua_pushliteral(state(), "12");
    lua_createtable(state(), 0, 0);
    lua_newuserdata(state(), 16);
    lua_pushlightuserdata(state(), this);
    lua_pushthread(state());
    for (int i = 1; i <= lua_gettop(state()) + 2; ++i)
        EXPECT_FALSE(Words::readNumber(state(), i, m_number)) << i;
}

TEST_F(LuaStackWordsTest, FindsBlocksOfFullUserdataOnly)
{
    if (m_isUnknown)
        return;
    void* const block = lua_newuserdata(state(), 16);
    lua_pushlightuserdata(state(), block);
    lua_pushnumber(state(), 1);
    lua_pushnil(state());
    lua_createtable(state(), 0, 0);
    EXPECT_EQ(Words::readBlock(state(), 1), block);
    EXPECT_EQ(Words::readSize(block), 16U);
    for (int i = 2; i <= 7; ++i)
        EXPECT_EQ(Words::readBlock(state(), i), nullptr) << i;
    EXPECT_EQ(Words::readSize(lua_newuserdata(state(), 40)), 40U);
}

TEST_F(LuaStackWordsTest, PushesFiniteNumbersOnly)
{
    EXPECT_EQ(Words::pushNumber(state(), -2.5), !m_isUnknown);
    EXPECT_FALSE(Words::pushNumber(state(), std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(Words::pushNumber(state(), std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(lua_gettop(state()), m_isUnknown ? 0 : 1);
    if (!m_isUnknown)
    {
        EXPECT_EQ(lua_tonumber(state(), 1), -2.5);
    }
}

TEST_F(LuaStackWordsTest, NothingIsReadInPlaceWhereThatIsUnknown)
{
    Words::setKnown(false);
    lua_pushnumber(state(), 3.0);
    EXPECT_FALSE(Words::readNumber(state(), 1, m_number));
    EXPECT_FALSE(Words::pushNumber(state(), 3.0));
}

TEST_F(LuaStackWordsTest, IsKnownForTheInterpreterThatThisIsBuiltFor)
{
#if defined(__x86_64__) && defined(__linux__)
    EXPECT_TRUE(Words::isKnown());
#endif
}

} // namespace tbScripts::test
