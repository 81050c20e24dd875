#include "environments/lua/chunks/LuaChunkMaker.h"

#include "scripts/lua/LuaScriptStrategy.h"
#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>

namespace tbScripts::test
{

namespace
{

/// What has become of the bytes of a chunk.
struct DamageRow
{
    const char* row;
    std::string (*damage)(std::string bytes);
};

std::ostream& operator<<(std::ostream& stream, const DamageRow& row)
{
    return stream << row.row;
}

std::string compiled(const char* sources)
{
    lua::LuaScriptStrategy compiler(std::make_shared<const tbMemory::String>("test"));
    EXPECT_TRUE(compiler.load(sources));
    const tbMemory::Buffer& code = compiler.getBytecode()->code;
    return std::string(reinterpret_cast<const char*>(code.data()), code.size());
}

lua::LuaBytecode bytecodeOf(const std::string& bytes)
{
    return {tbMemory::Buffer(bytes.data(), bytes.size()), 1, 1};
}

} // namespace

class LuaChunkMakerTest : public LuaStateFixture
{
};

TEST_F(LuaChunkMakerTest, MakesTheChunkEachTimeItIsCalled)
{
    const std::string bytes = compiled("return 1 + select('#', ...)");
    ASSERT_TRUE(lua::pushChunkMaker(state(), bytecodeOf(bytes), "test"));

    for (int i = 0; i < 2; ++i)
    {
        lua_pushvalue(state(), 1);
        lua_call(state(), 0, 1);
    }

    EXPECT_FALSE(lua_rawequal(state(), 2, 3));
    lua_call(state(), 0, 1);
    EXPECT_EQ(lua_tonumber(state(), -1), 1.0);
    lua_settop(state(), 0);
}

TEST_F(LuaChunkMakerTest, MakesChunksWithInnerFunctionsAndForeignNumbers)
{
    const std::string bytes = compiled(
        "local function f(n) return function() return n end end return tonumber(f(2LL)())");
    ASSERT_TRUE(lua::pushChunkMaker(state(), bytecodeOf(bytes), "test"));

    lua_call(state(), 0, 1);
    lua_call(state(), 0, 1);

    EXPECT_EQ(lua_tonumber(state(), -1), 2.0);
    lua_settop(state(), 0);
}

TEST_F(LuaChunkMakerTest, MakesALongChunk)
{
    std::string sources;
    for (int i = 0; i < 2000; ++i)
        sources += "x" + std::to_string(i % 100) + " = 'text " + std::to_string(i) + "' ";
    const std::string bytes = compiled((sources + "return 'end'").c_str());
    ASSERT_TRUE(lua::pushChunkMaker(state(), bytecodeOf(bytes), "test"));

    lua_call(state(), 0, 1);
    lua_call(state(), 0, 1);

    EXPECT_STREQ(lua_tostring(state(), -1), "end");
    lua_settop(state(), 0);
}

class LuaChunkMakerDamageTest : public LuaChunkMakerTest,
                                public ::testing::WithParamInterface<DamageRow>
{
};

TEST_P(LuaChunkMakerDamageTest, IsNoMaker)
{
    const std::string bytes = GetParam().damage(compiled("x = 1"));

    EXPECT_FALSE(lua::pushChunkMaker(state(), bytecodeOf(bytes), "test"));

    EXPECT_EQ(lua_gettop(state()), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Damages,
    LuaChunkMakerDamageTest,
    ::testing::Values(
        DamageRow{"NoBytes", [](std::string) { return std::string(); }},
        DamageRow{"OnlyTheSignature", [](std::string bytes) { return bytes.substr(0, 4); }},
        DamageRow{
            "WithoutItsEnd",
            [](std::string bytes) { return bytes.substr(0, bytes.size() - 1) + 'x'; }},
        DamageRow{
            "WithoutDebugInformation",
            [](std::string bytes)
            {
                bytes[4] = static_cast<char>(bytes[4] | 2);
                return bytes;
            }},
        DamageRow{
            "OfAnotherVersion",
            [](std::string bytes)
            {
                bytes[3] = 99;
                return bytes;
            }},
        DamageRow{"NoCompiledCode", [](std::string) { return std::string("return 1 -- \0", 13); }}),
    RowName());

} // namespace tbScripts::test
