// What only the interpreter's own interface shows of user types.

#include "support/EnvironmentStateFixture.h"

#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

#include <cstring>

namespace tbScripts::test
{

namespace
{

constexpr std::size_t BOX_SIZE = 16;

} // namespace

class LuaUserTypeTest : public EnvironmentStateFixture
{
protected:
    /// Declares a type whose instances are all `m_object`.
    UserType& declareType(const std::string& name)
    {
        UserType& type = *environment().setUserType(name);
        type.setConstructor([this](const Parameters&) { return &m_object; });
        type.setDestructor([this](void*) { ++m_ends; });
        return type;
    }

    /// Declares all that a type can have.
    static void declareMembers(UserType& type)
    {
        type.setMethod("length", true)
            ->setFunction([](const Parameters& parameters) { return parameters[0]; });
        type.setOperator(BUILT_IN_FUNCTION::ADD)
            ->setFunction([](const Parameters& parameters) { return parameters[1]; });
        UserTypeFieldDescriptor field;
        field.getter = [](void*) { return FunctionParameter(1); };
        field.setter = [](const Parameters&) {};
        field.name = "x";
        field.type = PARAM_TYPE_SCRIPT_OBJECT;
        type.setField(field);
        UserTypeArrayDescriptor access;
        access.read = returning(2);
        access.write = [](const Parameters&) {};
        access.type = PARAM_TYPE_STRING;
        type.setArrayAccess(access);
    }

    /// Returns the bytes of the box in global `name`.
    std::vector<unsigned char> bytesOf(const char* name)
    {
        lua_getglobal(state(), name);
        EXPECT_EQ(lua_objlen(state(), -1), BOX_SIZE);
        std::vector<unsigned char> bytes(BOX_SIZE);
        std::memcpy(bytes.data(), lua_touserdata(state(), -1), BOX_SIZE);
        lua_pop(state(), 1);
        return bytes;
    }

    /// Returns the bytes of a living box of `m_object`.
    std::vector<unsigned char> expectedBytes(bool gcEnabled) const
    {
        const void* const object = &m_object;
        std::vector<unsigned char> bytes(BOX_SIZE, 0);
        std::memcpy(bytes.data(), &object, sizeof(object));
        bytes[sizeof(object)] = gcEnabled ? 1 : 0;
        return bytes;
    }

    /// Returns whether the registry holds, under `key`, the value of `expression`.
    bool isInRegistry(const char* key, const std::string& expression)
    {
        run("value = " + expression);
        lua_getfield(state(), LUA_REGISTRYINDEX, key);
        lua_getglobal(state(), "value");
        const bool isSame = lua_rawequal(state(), -1, -2) != 0;
        lua_pop(state(), 2);
        return isSame;
    }

    int m_object = 0;
    int m_ends = 0;
};

TEST_F(LuaUserTypeTest, TableIsInTheRegistryUnderTheName)
{
    declareType("Vec");
    EXPECT_TRUE(isInRegistry("Vec", "Vec"));
    EXPECT_FALSE(isInRegistry("Vec", "nil"));
}

TEST_F(LuaUserTypeTest, TableOfANamespacesTypeIsInTheRegistryUnderTheFullName)
{
    declareType("math::Vec");
    EXPECT_TRUE(isInRegistry("math::Vec", "math.Vec"));
    EXPECT_FALSE(isInRegistry("math::Vec", "nil"));
    EXPECT_TRUE(isInRegistry("Vec", "nil"));
}

TEST_F(LuaUserTypeTest, TableLeavesTheRegistryWithItsNamespace)
{
    declareType("world::Vec");
    environment().getNamespace("world")->release();
    EXPECT_TRUE(isInRegistry("world::Vec", "nil"));
}

TEST_F(LuaUserTypeTest, ClearLeavesTheTableInTheRegistry)
{
    UserType& type = declareType("Vec");
    declareMembers(type);
    type.clear();
    EXPECT_TRUE(isInRegistry("Vec", "Vec"));
}

TEST_F(LuaUserTypeTest, InstanceThatAScriptMadeHoldsObjectAndFlag)
{
    declareType("Vec");
    run("v = Vec.new()");
    EXPECT_EQ(bytesOf("v"), expectedBytes(true));
}

TEST_F(LuaUserTypeTest, InstanceOfTheHostHoldsObjectWithoutFlag)
{
    declareType("Vec");
    environment().setObject("v", "Vec", &m_object);
    EXPECT_EQ(bytesOf("v"), expectedBytes(false));
}

TEST_F(LuaUserTypeTest, SwitchesChangeNothingButTheFlag)
{
    declareType("Vec");
    run("v = Vec.new()  v:disableGc()");
    EXPECT_EQ(bytesOf("v"), expectedBytes(false));
    run("v:enableGc()");
    EXPECT_EQ(bytesOf("v"), expectedBytes(true));
}

TEST_F(LuaUserTypeTest, FinaliserLeavesThePointerAndMarksTheBox)
{
    declareType("Vec");
    run("v = Vec.new()  v:__gc()");
    const std::vector<unsigned char> bytes = bytesOf("v");
    std::vector<unsigned char> expected = expectedBytes(true);
    expected[sizeof(void*) + 1] = 1;
    EXPECT_EQ(bytes, expected);
    EXPECT_EQ(m_ends, 1);
}

TEST_F(LuaUserTypeTest, BoxIsEmptyAndWithoutMetatableWhileTheConstructorRuns)
{
    UserType& type = declareType("Vec");
    std::vector<unsigned char> bytes(BOX_SIZE, 1);
    bool hasMetatable = true;
    type.setConstructor(
        [&](const Parameters&)
        {
            // The box is what the factory has on top of its stack.
            EXPECT_EQ(lua_type(state(), -1), LUA_TUSERDATA);
            std::memcpy(bytes.data(), lua_touserdata(state(), -1), BOX_SIZE);
            hasMetatable = lua_getmetatable(state(), -1) != 0;
            return &m_object;
        });

    run("Vec.new('ignored')");

    EXPECT_FALSE(hasMetatable);
    EXPECT_EQ(bytes, std::vector<unsigned char>(BOX_SIZE, 0));
}

TEST_F(LuaUserTypeTest, OperationsLeaveTheStackAsItWas)
{
    const int height = stackHeight();
    UserType& type = declareType("Vec");

    declareMembers(type);
    declareMembers(type);
    type.setOperator(static_cast<BUILT_IN_FUNCTION>(12));
    type.clear();
    type.getMethod("length");
    environment().setUserType("FILE*");
    forgetLog(); // that methods are registered already, and what cannot be

    EXPECT_EQ(stackHeight(), height);
}

TEST_F(LuaUserTypeTest, UsesLeaveTheStackAsItWas)
{
    UserType& type = declareType("Vec");
    declareMembers(type);
    const int height = stackHeight();
    run("local v = Vec.new() v.x = {} v[1] = 'a' local a = v.x, v[1], v:length(), v + v "
        "pcall(function() v.x = 1 end) pcall(function() v[1] = {} end) "
        "v:disableGc() v:enableGc() v:__gc()");
    EXPECT_EQ(stackHeight(), height);
}

TEST_F(LuaUserTypeTest, DeclarationsAnewTakeNoFurtherRegistrySlots)
{
    UserType& type = declareType("Vec");
    declareMembers(type);
    type.clear();
    const int slots = countRegistrySlots();

    for (int i = 0; i < 50; ++i)
    {
        declareMembers(type);
        type.clear();
    }

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaUserTypeTest, TypesThatAreGoneLeaveNoRegistrySlot)
{
    environment().setNamespace("world");
    const int slots = countRegistrySlots();

    for (int i = 0; i < 50; ++i)
    {
        declareMembers(declareType("world::Vec"));
        environment().getNamespace("world")->release();
    }

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaUserTypeTest, UsesTakeNoRegistrySlot)
{
    declareMembers(declareType("Vec"));
    run("list = {}  v = Vec.new()");
    const int slots = countRegistrySlots();
    run("for i = 1, 50 do local w = Vec.new() w[1] = 'a' local x = w.x, w[1], w:length() end");
    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaUserTypeTest, TypeThatIsGoneIsCollectedWithItsLastInstance)
{
    declareMembers(declareType("world::Vec"));
    run("weak = setmetatable({ world.Vec }, { __mode = 'v' })  v = world.Vec.new()");
    environment().getNamespace("world")->release();
    collect();
    run("isKept = weak[1] ~= nil");
    EXPECT_TRUE(environment().getVar("isKept", false));

    run("v = nil");
    collect();

    run("isKept = weak[1] ~= nil");
    EXPECT_FALSE(environment().getVar("isKept", true));
    EXPECT_EQ(m_ends, 1);
}

} // namespace tbScripts::test
