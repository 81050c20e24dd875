// Records of userdata of every sort: types with names of all lengths, boxes that scripts spoilt,
// and blocks that are none of ours. And values that only the interpreter's own interface can make.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/LogFixture.h"
#include "support/RowName.h"
#include "support/TypeTable.h"

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

using Bytes = std::vector<unsigned char>;

const Bytes EMPTY_RECORD{'u', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

} // namespace

class ScriptValueUserdataTest : public LogFixture
{
protected:
    ScriptValueUserdataTest()
        : m_strategy(std::make_shared<const tbMemory::String>("world"))
    {
        void* const object = &m_object;
        m_pointer.resize(8);
        std::memcpy(m_pointer.data(), &object, sizeof(object));
    }

    void TearDown() override
    {
        EXPECT_EQ(lua_gettop(state()), 0);
        LogFixture::TearDown();
    }

    lua_State* state() const { return m_strategy.getHandle().get(); }

    lua::LuaStateSlot& slot() const { return *m_strategy.getHandle().getSlot(); }

    // Publishes a metatable as declaring a type does.
    void declareType(const std::string& fullName) { publishTypeTable(slot(), state(), fullName); }

    lua::LuaInstanceBox* pushBox(const std::string& typeName, bool gcEnabled)
    {
        lua::pushInstance(slot(), state(), &m_object, gcEnabled, typeName);
        return static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
    }

    // Returns the bytes of the value on top of the stack, which it pops.
    Bytes writeTop(bool transferOwnership)
    {
        lua_setfield(state(), LUA_GLOBALSINDEX, "v");
        return write(transferOwnership);
    }

    // Returns the bytes of the global `v`.
    Bytes write(bool transferOwnership)
    {
        const ScriptObjectReference value = m_strategy.getVarObjectReference("v");
        const tbMemory::Buffer bytes = m_strategy.serializeScriptObject(value, transferOwnership);
        return Bytes(bytes.begin(), bytes.end());
    }

    // Makes the global `v` of the bytes and returns its block.
    const lua::LuaInstanceBox* read(const Bytes& bytes)
    {
        m_strategy.setVarObjectReference("v", m_strategy.deserializeScriptObject(bytes));
        lua_getfield(state(), LUA_GLOBALSINDEX, "v");
        const void* const block = lua_touserdata(state(), -1);
        lua_pop(state(), 1);
        return static_cast<const lua::LuaInstanceBox*>(block);
    }

    Bytes withPointer(Bytes record) const
    {
        record.insert(record.end(), m_pointer.begin(), m_pointer.end());
        return record;
    }

    lua::LuaEnvironmentStrategy m_strategy;
    int m_object = 0;
    Bytes m_pointer;
};

// A type's name and what comes before the pointer.
struct NameRow
{
    const char* name;
    Bytes start;
};

using TypeNameRecordTest = OnValues<ScriptValueUserdataTest, NameRow>;

INSTANTIATE_TEST_SUITE_P(
    Lengths,
    TypeNameRecordTest,
    ::testing::Values(
        NameRow{"", {'u', 1, 's', 0, 0, 0, 0, 0}},
        NameRow{"A", {'u', 1, 's', 'A', 0, 0, 0, 0}},
        NameRow{"AB", {'u', 1, 's', 'A', 'B', 0, 0, 0}},
        NameRow{"ABC", {'u', 1, 's', 'A', 'B', 'C', 0, 0, 0, 0, 0, 0}},
        NameRow{"ABCDEF", {'u', 1, 's', 'A', 'B', 'C', 'D', 'E', 'F', 0, 0, 0}},
        NameRow{"ABCDEFG", {'u', 1, 's', 'A', 'B', 'C', 'D', 'E', 'F', 'G', 0, 0, 0, 0, 0, 0}}),
    [](const ::testing::TestParamInfo<NameRow>& row)
    { return "Length" + std::to_string(std::strlen(row.param.name)); });

TEST_P(TypeNameRecordTest, IsWritten)
{
    declareType(GetParam().name);
    pushBox(GetParam().name, false);

    EXPECT_EQ(writeTop(true), withPointer(GetParam().start));
}

TEST_P(TypeNameRecordTest, IsRead)
{
    declareType(GetParam().name);

    const lua::LuaInstanceBox* const box = read(withPointer(GetParam().start));

    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->object, &m_object);
    EXPECT_TRUE(box->gcEnabled);
    EXPECT_EQ(m_strategy.getObject("v", GetParam().name), &m_object);
}

TEST_P(TypeNameRecordTest, IsReadWithoutTheType)
{
    Bytes bytes{'{', 0, 0, 0, 'k', 'a', 0, 0};
    const Bytes record = withPointer(GetParam().start);
    bytes.insert(bytes.end(), record.begin(), record.end());
    bytes.insert(bytes.end(), {'k', 'b', 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0});

    read(bytes);

    lua_getfield(state(), LUA_GLOBALSINDEX, "v");
    lua_getfield(state(), -1, "b");
    lua_getfield(state(), -2, "a");
    EXPECT_TRUE(lua_toboolean(state(), -2));
    EXPECT_EQ(lua_objlen(state(), -1), 16U);
    EXPECT_EQ(lua_getmetatable(state(), -1), 0);
    lua_settop(state(), 0);
}

TEST_F(ScriptValueUserdataTest, ReadBlockIsABoxOfSixteenBytesWithZeros)
{
    declareType("T");

    const lua::LuaInstanceBox* const box = read(withPointer({'u', 0, 's', 'T', 0, 0, 0, 0}));

    ASSERT_NE(box, nullptr);
    std::array<unsigned char, 16> expected{};
    std::memcpy(expected.data(), m_pointer.data(), m_pointer.size());
    EXPECT_EQ(std::memcmp(box, expected.data(), expected.size()), 0);
}

TEST_F(ScriptValueUserdataTest, EveryFlagButZeroHandsTheObjectOver)
{
    declareType("T");

    EXPECT_TRUE(read(withPointer({'u', 2, 's', 'T', 0, 0, 0, 0}))->gcEnabled);
    EXPECT_TRUE(read(withPointer({'u', 0x80, 's', 'T', 0, 0, 0, 0}))->gcEnabled);
    EXPECT_FALSE(read(withPointer({'u', 0, 's', 'T', 0, 0, 0, 0}))->gcEnabled);
}

TEST_F(ScriptValueUserdataTest, OnlyATransferClearsTheFlagOfTheBlock)
{
    declareType("T");
    const lua::LuaInstanceBox* const box = pushBox("T", true);
    lua_pushvalue(state(), -1);

    EXPECT_EQ(writeTop(false), withPointer({'u', 0, 's', 'T', 0, 0, 0, 0}));
    EXPECT_TRUE(box->gcEnabled);
    writeTop(true);

    EXPECT_FALSE(box->gcEnabled);
    EXPECT_EQ(box->object, &m_object);
}

TEST_F(ScriptValueUserdataTest, TransferClearsTheFlagOfABlockWithoutType)
{
    const lua::LuaInstanceBox* const box = pushBox("Unknown", true);

    EXPECT_EQ(writeTop(true), withPointer({'u', 0, 0, 0}));

    EXPECT_FALSE(box->gcEnabled);
}

TEST_F(ScriptValueUserdataTest, DestroyedBlockHasNoPointerWhateverItsType)
{
    declareType("T");
    lua::LuaInstanceBox* const typed = pushBox("T", true);
    lua::LuaInstanceBox* const untyped = pushBox("Unknown", true);
    typed->isDestroyed = untyped->isDestroyed = true;

    EXPECT_EQ(writeTop(true), EMPTY_RECORD);
    EXPECT_TRUE(untyped->gcEnabled);
    EXPECT_EQ(writeTop(true), (Bytes{'u', 1, 's', 'T', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

// The size of a foreign block without metatable.
using ForeignBlockTest = OnValues<ScriptValueUserdataTest, std::size_t>;

INSTANTIATE_TEST_SUITE_P(
    Sizes, ForeignBlockTest, ::testing::Values(0U, 1U, 7U, 8U, 15U, 17U, 1000U));

TEST_P(ForeignBlockTest, IsNotLookedIntoNorChanged)
{
    void* const block = lua_newuserdata(state(), GetParam());
    std::memset(block, 1, GetParam());

    EXPECT_EQ(writeTop(true), EMPTY_RECORD);

    const auto* const bytes = static_cast<unsigned char*>(block);
    EXPECT_EQ(Bytes(bytes, bytes + GetParam()), Bytes(GetParam(), 1));
}

TEST_F(ScriptValueUserdataTest, ForeignBlockOfOurSizeWithOtherBytesIsNotLookedInto)
{
    std::memset(lua_newuserdata(state(), 16), 2, 16);

    EXPECT_EQ(writeTop(true), EMPTY_RECORD);
}

TEST_F(ScriptValueUserdataTest, ForeignBlockOfOurSizeWithAMetatableIsNotLookedInto)
{
    void* const block = lua_newuserdata(state(), 16);
    std::memset(block, 1, 16);
    luaL_newmetatable(state(), "Foreign");
    lua_pushstring(state(), "Foreign");
    lua_setfield(state(), -2, "__name");
    lua_setmetatable(state(), -2);

    EXPECT_EQ(writeTop(true), EMPTY_RECORD);
    EXPECT_EQ(static_cast<unsigned char*>(block)[8], 1);
}

TEST_F(ScriptValueUserdataTest, LightUserdataIsWrittenAsAKeyWithoutValue)
{
    lua_createtable(state(), 0, 1);
    lua_pushlightuserdata(state(), &m_object);
    lua_setfield(state(), -2, "p");

    EXPECT_EQ(writeTop(true), (Bytes{'{', 0, 0, 0, 'k', 'p', 0, 0, '}', 0, 0, 0}));
}

// A value that has no record on its own.
struct UnwrittenRow
{
    const char* row;
    void (*push)(lua_State* state);
};

using UnwrittenValueTest = OnRows<ScriptValueUserdataTest, UnwrittenRow>;

ROWS(
    UnwrittenValueTest,
    {"Nil", [](lua_State* state) { lua_pushnil(state); }},
    {"LightUserdata", [](lua_State* state) { lua_pushlightuserdata(state, state); }},
    {"Coroutine", [](lua_State* state) { lua_newthread(state); }},
    {"HostFunction",
     [](lua_State* state) { lua_pushcfunction(state, [](lua_State*) { return 0; }); }},
    {"ForeignNumber",
     [](lua_State* state) { luaL_dostring(state, "return require('ffi').new('int64_t', 1)"); }});

TEST_P(UnwrittenValueTest, GivesNoBytes)
{
    GetParam().push(state());
    auto anchored = std::make_unique<lua::LuaScriptObjectInterpreterReference>(
        m_strategy.getHandle(), PARAM_TYPE_SCRIPT_OBJECT, 0);
    anchored->anchor(state());
    const ScriptObjectReference value(anchored.release());

    const tbMemory::Buffer bytes = m_strategy.serializeScriptObject(value, true);

    EXPECT_TRUE(bytes.empty());
}

} // namespace tbScripts::test
