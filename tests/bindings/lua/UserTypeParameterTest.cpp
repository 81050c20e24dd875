#include "support/LuaFunctionFixture.h"
#include "support/RowName.h"

#include <cstring>

namespace tbScripts::test
{

namespace
{

// An object of the host, one for each instance.
struct Unit
{
    int number = 0;
};

struct KindOfUserType
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
};

struct ForeignArgument
{
    const char* row;
    const char* expression;
    const char* typeName;
};

} // namespace

class UserTypeParameterTest : public LuaFunctionFixture
{
protected:
    UserTypeParameterTest()
    {
        setInstance("enemy", "Enemy", &m_enemy, true);
        setInstance("player", "Player", &m_player, false);
    }

    /// Declares `take`, which notes object and type name of its parameter.
    lua::LuaFunction& declareTake(FUNCTION_PARAMETER_TYPE type, const char* typeName)
    {
        lua::LuaFunction& function = declare(
            "take",
            doing(
                [this](const Parameters& parameters)
                {
                    m_object = parameters[0].getUserTypeObject();
                    m_names.emplace_back(std::string_view(parameters[0].getUserTypeName()));
                }));
        function.addParameter(type, typeName);
        return function;
    }

    /// Declares `pass`, which does `action` and then returns its parameter.
    template <typename Action>
    lua::LuaFunction& declarePass(FUNCTION_PARAMETER_TYPE type, Action action)
    {
        lua::LuaFunction& function = declare(
            "pass",
            [action](const Parameters& parameters)
            {
                action(parameters);
                return parameters[0];
            });
        function.addParameter(type, "Enemy");
        return function;
    }

    lua::LuaFunction& declarePass(FUNCTION_PARAMETER_TYPE type)
    {
        return declarePass(type, [](const Parameters&) {});
    }

    /// Runs a script that fails with this message, behind its line, which is logged too.
    void mismatches(const std::string& sources, const std::string& expected)
    {
        const std::string message = "Error l.1 while calling take. " + expected;
        raises(sources, message);
        expectLogged(message, "LuaFunction");
    }

    lua::LuaInstanceBox& boxIn(const char* name)
    {
        lua_getglobal(state(), name);
        auto* const box = static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
        lua_pop(state(), 1);
        return *box;
    }

    Unit m_enemy;
    Unit m_player;
    void* m_object = nullptr;
    std::vector<std::string> m_names; // of the types, one for each call
};

// Names are compared in pieces of several bytes.
TEST_F(UserTypeParameterTest, NamesThatDifferInAnyOneByteAreDifferentTypes)
{
    for (std::size_t length = 1; length <= 18; ++length)
    {
        const std::string name(length, 'a');
        declareTake(PARAM_TYPE_USER_TYPE, name.c_str());
        for (std::size_t place = 0; place < length; ++place)
        {
            std::string other = name;
            other[place] = 'b';
            setInstance("other", other, &m_player, false);
            mismatches("take(other)", "Expected " + name + ", got userdata.");
        }
    }
    EXPECT_THAT(m_names, ElementsAre());
}

using UserTypeParameterKindTest = OnRows<UserTypeParameterTest, KindOfUserType>;

TEST_P(UserTypeParameterKindTest, GetsObjectAndTypeName)
{
    declareTake(GetParam().type, "Enemy");
    run("take(enemy)");
    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy"));
}

TEST_P(UserTypeParameterKindTest, RefusesInstancesOfOtherTypesDestroyedOnesAndNothing)
{
    declareTake(GetParam().type, "Enemy");
    mismatches("take(player)", "Expected Enemy, got userdata.");
    mismatches("take()", "Expected Enemy, got no value.");
    setInstance("enemy", "Enemy", &m_enemy, true).isDestroyed = true;
    mismatches("take(enemy)", "Expected Enemy, got userdata.");
    EXPECT_THAT(m_names, ElementsAre());
}

TEST_P(UserTypeParameterKindTest, GetsANullObjectForNil)
{
    declareTake(GetParam().type, "Enemy");
    run("take(enemy)");
    run("take(nil)");
    EXPECT_EQ(m_object, nullptr);
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Enemy"));
}

TEST_P(UserTypeParameterKindTest, GoesByTheNameThatTheTypeWasMadeWith)
{
    declareTake(GetParam().type, "Enemy");
    run("debug.getmetatable(enemy).__name = 'Player' take(enemy)");
    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy"));
}

TEST_P(UserTypeParameterKindTest, RefusesAnInstanceOfAnEarlierTypeOfThatName)
{
    lua_pushnil(state());
    lua_setfield(state(), LUA_REGISTRYINDEX, "Enemy");
    declareUserType("Enemy");
    declareTake(GetParam().type, "Enemy");
    raises("take(enemy)", "Error l.1 while calling take. Expected Enemy, got userdata.");
    declareTake(GetParam().type, "");
    raises("take(enemy)", "Error l.1 while calling take. Expected , got userdata.");
    forgetLog();
}

TEST_P(UserTypeParameterKindTest, WithoutNameAcceptsEveryTypeOnEveryCall)
{
    declareTake(GetParam().type, "");
    run("take(enemy) take(player) take(nil) take(enemy)");
    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Player", "", "Enemy"));
    mismatches("take()", "Expected , got no value.");
}

TEST_P(UserTypeParameterKindTest, WithoutNameStaysSoAndInACopyOfTheFunctionToo)
{
    lua::LuaFunction& function = declareTake(GetParam().type, "");
    run("take(enemy)");
    const FunctionParameter declared = function.getDefinition().getParameters()[0].getDeclaration();
    EXPECT_EQ(declared.getType(), GetParam().type);
    EXPECT_EQ(declared.getUserTypeName(), "");

    lua::LuaFunction& copy = declare("other", nullptr);
    static_cast<Function&>(copy) = function;
    run("take(player) other(player)");
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Player", "Player"));
}

ROWS(
    UserTypeParameterKindTest,
    {"Owned", PARAM_TYPE_USER_TYPE_OWNED},
    {"Kept", PARAM_TYPE_USER_TYPE});

class UserTypeParameterForeignTest : public OnRows<UserTypeParameterTest, ForeignArgument>
{
protected:
    UserTypeParameterForeignTest()
    {
        lua_pushlightuserdata(state(), &m_enemy);
        lua_setglobal(state(), "light");
        std::memset(lua_newuserdata(state(), 16), 0, 16);
        lua_setglobal(state(), "bare");
        run("forged = newproxy(true) getmetatable(forged).__name = 'Enemy'"
            " proxied = newproxy() debug.setmetatable(proxied, debug.getmetatable(enemy))"
            " derived = setmetatable({}, debug.getmetatable(enemy))");
    }
};

TEST_P(UserTypeParameterForeignTest, IsAMismatchWithAndWithoutDeclaredName)
{
    const std::string call = std::string("take(") + GetParam().expression + ")";
    declareTake(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
    mismatches(call, std::string("Expected Enemy, got ") + GetParam().typeName + ".");
    declareTake(PARAM_TYPE_USER_TYPE, "");
    mismatches(call, std::string("Expected , got ") + GetParam().typeName + ".");
    EXPECT_THAT(m_names, ElementsAre());
}

ROWS(
    UserTypeParameterForeignTest,
    {"Bool", "true", "boolean"},
    {"Number", "7", "number"},
    {"Text", "'Enemy'", "string"},
    {"Table", "{}", "table"},
    {"TableWithTheMetatable", "derived", "table"},
    {"Function", "print", "function"},
    {"FileHandle", "io.stdout", "userdata"},
    {"Proxy", "newproxy()", "userdata"},
    {"ProxyWithMetatable", "newproxy(true)", "userdata"},
    {"ProxyWithTheMetatable", "proxied", "userdata"},
    {"ForgedName", "forged", "userdata"},
    {"LightUserdata", "light", "userdata"},
    {"BlockWithoutMetatable", "bare", "userdata"});

TEST_F(UserTypeParameterTest, OwnedValueReturnedIsTheSameScriptValue)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    is("pass(enemy) == enemy", "true");
    EXPECT_TRUE(boxIn("enemy").gcEnabled);
    is("coroutine.wrap(function() return pass(enemy) == enemy end)()", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueOfADeclarationWithoutNameReturnedIsTheSameScriptValue)
{
    declare("pass", [](const Parameters& parameters) { return parameters[0]; })
        .addParameter(PARAM_TYPE_USER_TYPE_OWNED);
    is("pass(enemy) == enemy", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueThatDiedDuringTheCallIsReturnedWithoutASecondOwner)
{
    // Marks the box as the finaliser of a type does.
    declarePass(PARAM_TYPE_USER_TYPE_OWNED, [this](auto&) { boxIn("enemy").isDestroyed = true; });
    is("pass(enemy) == enemy", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueReturnedAfterANestedCallIsTheSameScriptValue)
{
    declarePass(
        PARAM_TYPE_USER_TYPE_OWNED,
        [this](auto& parameters) { callScript(parameters[1].getScriptObject()); })
        .addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    is("pass(enemy, function() collectgarbage() end) == enemy", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueGivenToANestedCallIsTheSameScriptValue)
{
    declarePass(
        PARAM_TYPE_USER_TYPE_OWNED,
        [this](auto& parameters) { callScript(parameters[1].getScriptObject(), {parameters[0]}); })
        .addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    run("pass(enemy, function(given) isSame = given == enemy end)");
    is("isSame", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueOfTheOuterCallReturnedByAnInnerOneIsTheSameScriptValue)
{
    FunctionParameter outerValue;
    declare("inner", [&outerValue](const Parameters&) { return outerValue; })
        .addParameter(PARAM_TYPE_USER_TYPE, "Player");
    declarePass(
        PARAM_TYPE_USER_TYPE_OWNED,
        [&](auto& parameters)
        {
            outerValue = parameters[0];
            callScript(parameters[1].getScriptObject());
        })
        .addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    run("pass(enemy, function() isSame = inner(player) == enemy end)");
    is("isSame", "true");
}

TEST_F(UserTypeParameterTest, OwnedValueReturnedWithItsFlagOffIsAnotherBoxThatOwnsNothing)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    setInstance("kept", "Enemy", &m_enemy, false);
    run("passed = pass(kept)");
    is("passed == kept", "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
    EXPECT_FALSE(boxIn("kept").gcEnabled);
}

TEST_F(
    UserTypeParameterTest, OwnedValueReturnedAfterItsBoxGotAnotherObjectIsAnotherBoxThatOwnsNothing)
{
    lua::LuaInstanceBox& box = setInstance("kept", "Enemy", &m_enemy, true);
    declarePass(PARAM_TYPE_USER_TYPE_OWNED, [&](auto&) { box.object = &m_player; });
    run("passed = pass(kept)");
    is("passed == kept", "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
}

TEST_F(UserTypeParameterTest, OwnedValueKeptAfterItsCallIsPushedAsAnotherBoxThatOwnsNothing)
{
    FunctionParameter kept;
    declarePass(PARAM_TYPE_USER_TYPE_OWNED, [&](auto& parameters) { kept = parameters[0]; });
    declare("give", [&kept](const Parameters&) { return kept; });
    run("pass(enemy) given = give()");
    is("given == enemy", "false");
    EXPECT_EQ(boxIn("given").object, &m_enemy);
    EXPECT_FALSE(boxIn("given").gcEnabled);
}

TEST_F(UserTypeParameterTest, KeptValueReturnedIsAnotherBoxThatOwnsNothing)
{
    declarePass(PARAM_TYPE_USER_TYPE);
    run("passed = pass(enemy)");
    is("passed == enemy", "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
}

TEST_F(UserTypeParameterTest, NullValueReturnedIsNoResult)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    is("select('#', pass(nil))", "0");
}

TEST_F(UserTypeParameterTest, RegistryIsAsBeforeTheCalls)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    const int slots = countRegistrySlots();
    run("for i = 1, 100 do pass(enemy) end");
    EXPECT_EQ(countRegistrySlots(), slots);
}

} // namespace tbScripts::test
