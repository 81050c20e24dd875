#include "environments/lua/chunks/LuaChunkMaker.h"

#include "environments/lua/chunks/LuaDump.h"
#include "scripts/lua/LuaScriptStrategy.h"
#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <cstddef>
#include <memory>
#include <string>

namespace tbScripts::test
{

namespace
{

using namespace std::string_literals;

/// What has become of the bytes of a chunk.
struct DamageRow
{
    const char* row;
    std::string (*damage)(std::string bytes);
};

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

class LuaChunkMakerTest : public LuaStateFixture
{
protected:
    lua::LuaChunkMaker m_maker;
};

TEST_F(LuaChunkMakerTest, MakesTheChunkEachTimeItIsCalled)
{
    const std::string bytes = compiled("return 1 + select('#', ...)");
    ASSERT_TRUE(m_maker.push(state(), bytecodeOf(bytes), "test"));

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
    ASSERT_TRUE(m_maker.push(state(), bytecodeOf(bytes), "test"));

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
    ASSERT_TRUE(m_maker.push(state(), bytecodeOf(bytes), "test"));

    lua_call(state(), 0, 1);
    lua_call(state(), 0, 1);

    EXPECT_STREQ(lua_tostring(state(), -1), "end");
    lua_settop(state(), 0);
}

using LuaChunkMakerDamageTest = OnRows<LuaChunkMakerTest, DamageRow>;

TEST_P(LuaChunkMakerDamageTest, IsNoMaker)
{
    const std::string bytes = GetParam().damage(compiled("x = 1"));

    EXPECT_FALSE(m_maker.push(state(), bytecodeOf(bytes), "test"));

    EXPECT_EQ(lua_gettop(state()), 0);
}

ROWS(
    LuaChunkMakerDamageTest,
    {"NoBytes", [](std::string) { return std::string(); }},
    {"OnlyTheSignature", [](std::string bytes) { return bytes.substr(0, 4); }},
    {"WithoutItsEnd", [](std::string bytes) { return bytes.substr(0, bytes.size() - 1) + 'x'; }},
    {"WithoutDebugInformation",
     [](std::string bytes)
     {
         bytes[4] = static_cast<char>(bytes[4] | 2);
         return bytes;
     }},
    {"OfAnotherVersion",
     [](std::string bytes)
     {
         bytes[3] = 99;
         return bytes;
     }},
    {"NoCompiledCode", [](std::string) { return std::string("return 1 -- \0", 13); }});

struct FrameRow
{
    std::string row;
    std::string chunk;
};

using test::operator<<;

using WholeDumpTest = OnRows<::testing::Test, FrameRow>;

ROWS(
    WholeDumpTest,
    {"WithoutNameAndFunctions", "\x1BLJ\x02\x02\0"s},
    {"WithNameAndWithoutFunctions", "\x1BLJ\x02\x08\x02@n\0"s},
    {"WithoutNameOfOneFunction",
     "\x1BLJ\x02\x0A\x03"
     "abc"
     "\0"s},
    {"WithNameOfTwoFunctions",
     "\x1BLJ\x02\x08\x01n\x01"
     "a"
     "\x02"
     "bc"
     "\0"s},
    {"WithALongFunction", "\x1BLJ\x02\x02\x80\x01" + std::string(128, 'x') + "\0"s},
    {"WithFlagsOfTwoBytes", "\x1BLJ\x02\x82\x01\0"s},
    {"WithMoreBehind", "\x1BLJ\x02\x02\0more"s});

TEST_P(WholeDumpTest, IsWhole)
{
    EXPECT_TRUE(lua::isDump(GetParam().chunk));
    EXPECT_TRUE(lua::isWholeDump(GetParam().chunk));
}

TEST_P(WholeDumpTest, IsNotWholeBeforeItsEnd)
{
    const std::size_t end = GetParam().row == "WithMoreBehind" ? 6 : GetParam().chunk.size();

    for (std::size_t size = 0; size < end; ++size)
        EXPECT_FALSE(lua::isWholeDump(tbMemory::StringView(GetParam().chunk.data(), size)));
}

using BrokenDumpTest = OnRows<::testing::Test, FrameRow>;

ROWS(
    BrokenDumpTest,
    {"FlagsWithoutEnd", "\x1BLJ\x02\x82\x82\x82\x82\x82\x82\x01\0"s},
    {"NameBeyondTheEnd", "\x1BLJ\x02\x08\x05n\0"s},
    {"HugeName", "\x1BLJ\x02\x08\xFF\xFF\xFF\xFF\x7Fn\0"s},
    {"FunctionBeyondTheEnd",
     "\x1BLJ\x02\x02\x05"
     "ab"
     "\0"s},
    {"HugeFunction", "\x1BLJ\x02\x02\xFF\xFF\xFF\xFF\x7F\0"s},
    {"NoEndAfterAFunction",
     "\x1BLJ\x02\x02\x01"
     "a"s});

TEST_P(BrokenDumpTest, IsNotWhole)
{
    EXPECT_FALSE(lua::isWholeDump(GetParam().chunk));
}

class LuaDumpFrameTest : public LuaStateFixture
{
protected:
    // Returns what the interpreter dumps for the function of that code.
    std::string dump(const std::string& code)
    {
        push("return string.dump(" + code + ")");
        std::size_t size = 0;
        const char* const bytes = lua_tolstring(state(), -1, &size);
        std::string dumped(bytes, size);
        lua_pop(state(), 1);
        return dumped;
    }
};

TEST_F(LuaDumpFrameTest, DumpsOfTheInterpreterAreWholeUpToTheirLastByte)
{
    std::string code = "function() local function a() end local t = {1.5, 'text'} return t";
    for (const std::string& dumped : {dump(code + " end"), dump(code + " end, true")})
    {
        EXPECT_TRUE(lua::isWholeDump(dumped));
        EXPECT_FALSE(lua::isWholeDump(tbMemory::StringView(dumped.data(), dumped.size() - 1)));
    }
}

TEST_F(LuaDumpFrameTest, SourceTextIsNoDump)
{
    EXPECT_FALSE(lua::isDump("return 1"));
    EXPECT_FALSE(lua::isDump(""));
}

} // namespace

} // namespace tbScripts::test
