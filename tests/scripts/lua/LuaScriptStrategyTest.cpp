// The compiled form itself.

#include "scripts/lua/LuaScriptStrategy.h"

#include "support/LuaStateFixture.h"

#include <memory>
#include <string>
#include <string_view>

namespace tbScripts::test
{

class LuaScriptStrategyTest : public LuaStateFixture
{
protected:
    LuaScriptStrategyTest()
        : m_strategy(std::make_shared<const tbMemory::String>("x"))
    {
    }

    // The bytes of the compiled form, "none" if there is none.
    std::string getBytecode() const
    {
        const std::shared_ptr<const lua::LuaBytecode> bytecode = m_strategy.getBytecode();
        return bytecode ? bytesOf(*bytecode) : "none";
    }

    static std::string bytesOf(const lua::LuaBytecode& bytecode)
    {
        return std::string(
            reinterpret_cast<const char*>(bytecode.code.data()), bytecode.code.size());
    }

    // What the interpreter's own dump of `sources`, which names the chunk, looks like.
    std::string dump(const std::string& sources)
    {
        EXPECT_EQ(luaL_loadstring(state(), sources.c_str()), 0);
        lua_getglobal(state(), "string");
        lua_getfield(state(), -1, "dump");
        lua_pushvalue(state(), -3);
        EXPECT_EQ(lua_pcall(state(), 1, 1, 0), 0);
        std::size_t size = 0;
        const char* const data = lua_tolstring(state(), -1, &size);
        const std::string bytes(data, size);
        lua_settop(state(), 0);
        return bytes;
    }

    lua::LuaScriptStrategy m_strategy;
};

TEST_F(LuaScriptStrategyTest, BytecodeIsTheWholeDumpWithItsDebugInformation)
{
    EXPECT_TRUE(m_strategy.load("local first = 1\nreturn first"));

    EXPECT_EQ(getBytecode(), dump("local first = 1\nreturn first"));
}

TEST_F(LuaScriptStrategyTest, SourcesEndAtTheirFirstZeroOrTheirViewAndMayBeEmptyOrNull)
{
    const std::vector<char> bytes = {'x', '=', '1'};

    EXPECT_TRUE(m_strategy.load(tbMemory::StringView(bytes.data(), bytes.size())));
    EXPECT_EQ(getBytecode(), dump("x=1"));
    EXPECT_TRUE(m_strategy.load(tbMemory::StringView("x=1\0x=2", 7)));
    EXPECT_EQ(getBytecode(), dump("x=1"));
    EXPECT_TRUE(m_strategy.load(tbMemory::StringView()));
    EXPECT_EQ(getBytecode(), dump(""));
    EXPECT_TRUE(m_strategy.load(""));
    EXPECT_EQ(getBytecode().substr(0, 3), "\x1bLJ");
}

TEST_F(LuaScriptStrategyTest, ThereIsNoBytecodeBeforeALoadAfterAFailedOneAndAfterAnUnload)
{
    EXPECT_EQ(getBytecode(), "none");
    m_strategy.load("x = 1");
    EXPECT_FALSE(m_strategy.load("x = = 1"));
    EXPECT_EQ(getBytecode(), "none");
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
    m_strategy.load("x = 1");

    m_strategy.unload();

    EXPECT_EQ(getBytecode(), "none");
}

TEST_F(LuaScriptStrategyTest, BytecodeThatARunHoldsOutlivesTheNextLoad)
{
    m_strategy.load("x = 1");
    const std::shared_ptr<const lua::LuaBytecode> held = m_strategy.getBytecode();

    m_strategy.load("x = 2");
    m_strategy.unload();

    EXPECT_EQ(bytesOf(*held), dump("x = 1"));
}

TEST_F(LuaScriptStrategyTest, EachLoadGivesAnotherVersion)
{
    m_strategy.load("x = 1");
    const std::uint64_t first = m_strategy.getBytecode()->version;
    m_strategy.load("x = 1");
    const std::uint64_t second = m_strategy.getBytecode()->version;

    EXPECT_NE(first, 0U);
    EXPECT_GT(second, first);
}

TEST_F(LuaScriptStrategyTest, EveryLoadIsOneOfTheSameScript)
{
    lua::LuaScriptStrategy other(std::make_shared<const tbMemory::String>("x"));
    other.load("x = 1");
    m_strategy.load("x = 1");
    const std::uint64_t first = m_strategy.getBytecode()->script;
    m_strategy.load("x = 2");

    EXPECT_EQ(m_strategy.getBytecode()->script, first);
    EXPECT_NE(other.getBytecode()->script, first);
}

} // namespace tbScripts::test
