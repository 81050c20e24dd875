#include "support/LuaFunctionFixture.h"

#include <cstring>
#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

// An object of the host, one for each instance.
struct Unit
{
    int number = 0;
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
            [this](const Parameters& parameters)
            {
                ++m_calls;
                m_object = parameters[0].getUserTypeObject();
                m_names.push_back(std::string(std::string_view(parameters[0].getUserTypeName())));
                return FunctionParameter::VOID;
            });
        function.addParameter(type, typeName);
        return function;
    }

    /// Declares `pass`, which returns its parameter.
    void declarePass(FUNCTION_PARAMETER_TYPE type)
    {
        declare("pass", [](const Parameters& parameters) { return parameters[0]; })
            .addParameter(type, "Enemy");
    }

    /// Runs a failing script whose one log entry is its own message, and returns that.
    std::string mismatchOf(const std::string& sources)
    {
        const std::string message = runExpectingError(sources);
        EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{message, "LuaFunction"}));
        return message;
    }

    const lua::LuaInstanceBox& boxIn(const char* name)
    {
        lua_getglobal(state(), name);
        const auto* const box = static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
        lua_pop(state(), 1);
        return *box;
    }

    /// Marks the box in global `name` as the finaliser of a type does.
    void destroyObjectOf(const char* name)
    {
        lua_getglobal(state(), name);
        static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1))->isDestroyed = true;
        lua_pop(state(), 1);
    }

    Unit m_enemy;
    Unit m_player;
    int m_calls = 0;
    void* m_object = nullptr;
    std::vector<std::string> m_names;
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
            EXPECT_EQ(
                mismatchOf("take(other)"),
                "Error l.1 while calling take. Expected " + name + ", got userdata.");
        }
    }
    EXPECT_EQ(m_calls, 0);
}

namespace
{

struct KindOfUserType
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
};

std::ostream& operator<<(std::ostream& stream, const KindOfUserType& row)
{
    return stream << row.name;
}

} // namespace

class UserTypeParameterKindTest : public UserTypeParameterTest,
                                  public ::testing::WithParamInterface<KindOfUserType>
{
};

TEST_P(UserTypeParameterKindTest, GetsObjectAndTypeName)
{
    declareTake(GetParam().type, "Enemy");

    run("take(enemy)");

    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy"));
}

TEST_P(UserTypeParameterKindTest, RefusesAnInstanceOfAnotherType)
{
    declareTake(GetParam().type, "Enemy");

    const std::string message = mismatchOf("take(player)");

    EXPECT_EQ(message, "Error l.1 while calling take. Expected Enemy, got userdata.");
    EXPECT_EQ(m_calls, 0);
}

TEST_P(UserTypeParameterKindTest, GetsANullObjectForNil)
{
    declareTake(GetParam().type, "Enemy");
    run("take(enemy)");

    run("take(nil)");

    EXPECT_EQ(m_calls, 2);
    EXPECT_EQ(m_object, nullptr);
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Enemy"));
}

TEST_P(UserTypeParameterKindTest, RefusesAMissingArgument)
{
    declareTake(GetParam().type, "Enemy");

    const std::string message = mismatchOf("take()");

    EXPECT_EQ(message, "Error l.1 while calling take. Expected Enemy, got no value.");
}

TEST_P(UserTypeParameterKindTest, RefusesADestroyedInstance)
{
    declareTake(GetParam().type, "Enemy");
    setInstance("enemy", "Enemy", &m_enemy, true).isDestroyed = true;

    const std::string message = mismatchOf("take(enemy)");

    EXPECT_EQ(message, "Error l.1 while calling take. Expected Enemy, got userdata.");
}

TEST_P(UserTypeParameterKindTest, GoesByTheNameThatTheTypeWasMadeWith)
{
    declareTake(GetParam().type, "Enemy");

    run("debug.getmetatable(enemy).__name = 'Player' take(enemy)");

    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy"));
}

TEST_P(UserTypeParameterKindTest, AcceptsAnInstanceOfAnEarlierTypeOfThatName)
{
    declareTake(GetParam().type, "Enemy");
    lua_pushnil(state());
    lua_setfield(state(), LUA_REGISTRYINDEX, "Enemy");
    declareUserType("Enemy");

    run("take(enemy)");

    EXPECT_EQ(m_object, &m_enemy);
}

TEST_P(UserTypeParameterKindTest, WithoutNameAcceptsEveryTypeOnEveryCall)
{
    declareTake(GetParam().type, "");

    run("take(enemy) take(player) take(enemy)");

    EXPECT_EQ(m_calls, 3);
    EXPECT_EQ(m_object, &m_enemy);
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Player", "Enemy"));
}

TEST_P(UserTypeParameterKindTest, WithoutNameShowsNoneForNil)
{
    declareTake(GetParam().type, "");

    run("take(enemy) take(nil) take(player)");

    EXPECT_THAT(m_names, ElementsAre("Enemy", "", "Player"));
}

TEST_P(UserTypeParameterKindTest, WithoutNameStaysDeclaredWithoutName)
{
    const lua::LuaFunction& function = declareTake(GetParam().type, "");

    run("take(enemy)");

    const FunctionParameter declared = function.getDefinition().getParameters()[0].getDeclaration();
    EXPECT_EQ(declared.getType(), GetParam().type);
    EXPECT_EQ(declared.getUserTypeName(), "");
}

TEST_P(UserTypeParameterKindTest, WithoutNameStaysSoInACopyOfTheFunction)
{
    lua::LuaFunction& function = declareTake(GetParam().type, "");
    run("take(enemy)");

    lua::LuaFunction& copy = declare("other", nullptr);
    static_cast<Function&>(copy) = function;

    run("take(player) other(player)");
    EXPECT_THAT(m_names, ElementsAre("Enemy", "Player", "Player"));
}

TEST_P(UserTypeParameterKindTest, WithoutNameRefusesAMissingArgument)
{
    declareTake(GetParam().type, "");
    run("take(enemy)");

    const std::string message = mismatchOf("take()");

    EXPECT_EQ(message, "Error l.1 while calling take. Expected , got no value.");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeParameterKindTest,
    ::testing::Values(
        KindOfUserType{"Owned", PARAM_TYPE_USER_TYPE_OWNED},
        KindOfUserType{"Kept", PARAM_TYPE_USER_TYPE}),
    [](const auto& row) { return std::string(row.param.name); });

namespace
{

struct ForeignArgument
{
    const char* name;
    const char* expression;
    const char* typeName;
};

std::ostream& operator<<(std::ostream& stream, const ForeignArgument& row)
{
    return stream << row.name;
}

} // namespace

class UserTypeParameterForeignTest : public UserTypeParameterTest,
                                     public ::testing::WithParamInterface<ForeignArgument>
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

TEST_P(UserTypeParameterForeignTest, IsAMismatch)
{
    declareTake(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");

    const std::string message = mismatchOf(std::string("take(") + GetParam().expression + ")");

    EXPECT_EQ(
        message,
        std::string("Error l.1 while calling take. Expected Enemy, got ") + GetParam().typeName +
            ".");
    EXPECT_EQ(m_calls, 0);
}

TEST_P(UserTypeParameterForeignTest, IsAMismatchAlsoWithoutDeclaredName)
{
    declareTake(PARAM_TYPE_USER_TYPE, "");

    const std::string message = mismatchOf(std::string("take(") + GetParam().expression + ")");

    EXPECT_EQ(
        message,
        std::string("Error l.1 while calling take. Expected , got ") + GetParam().typeName + ".");
    EXPECT_EQ(m_calls, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    UserTypeParameterForeignTest,
    ::testing::Values(
        ForeignArgument{"Bool", "true", "boolean"},
        ForeignArgument{"Number", "7", "number"},
        ForeignArgument{"Text", "'Enemy'", "string"},
        ForeignArgument{"Table", "{}", "table"},
        ForeignArgument{"TableWithTheMetatable", "derived", "table"},
        ForeignArgument{"Function", "print", "function"},
        ForeignArgument{"FileHandle", "io.stdout", "userdata"},
        ForeignArgument{"Proxy", "newproxy()", "userdata"},
        ForeignArgument{"ProxyWithMetatable", "newproxy(true)", "userdata"},
        ForeignArgument{"ProxyWithTheMetatable", "proxied", "userdata"},
        ForeignArgument{"ForgedName", "forged", "userdata"},
        ForeignArgument{"LightUserdata", "light", "userdata"},
        ForeignArgument{"BlockWithoutMetatable", "bare", "userdata"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(UserTypeParameterTest, OwnedValueReturnedIsTheSameScriptValue)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);

    run("isSame = pass(enemy) == enemy");

    EXPECT_EQ(global("isSame"), "true");
    EXPECT_TRUE(boxIn("enemy").gcEnabled);
}

TEST_F(UserTypeParameterTest, OwnedValueReturnedFromACoroutineIsTheSameScriptValue)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);

    run("coroutine.wrap(function() isSame = pass(enemy) == enemy end)()");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueOfADeclarationWithoutNameReturnedIsTheSameScriptValue)
{
    declare("pass", [](const Parameters& parameters) { return parameters[0]; })
        .addParameter(PARAM_TYPE_USER_TYPE_OWNED);

    run("isSame = pass(enemy) == enemy");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueThatDiedDuringTheCallIsReturnedWithoutASecondOwner)
{
    declare(
        "pass",
        [this](const Parameters& parameters)
        {
            destroyObjectOf("enemy");
            return parameters[0];
        })
        .addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");

    run("isSame = pass(enemy) == enemy");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueReturnedAfterANestedCallIsTheSameScriptValue)
{
    lua::LuaFunction& function = declare(
        "pass",
        [this](const Parameters& parameters)
        {
            callScript(parameters[1].getScriptObject());
            return parameters[0];
        });
    function.addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
    function.addParameter(PARAM_TYPE_SCRIPT_FUNCTION);

    run("isSame = pass(enemy, function() collectgarbage() end) == enemy");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueGivenToANestedCallIsTheSameScriptValue)
{
    lua::LuaFunction& function = declare(
        "give",
        [this](const Parameters& parameters)
        {
            callScript(parameters[1].getScriptObject(), {parameters[0]});
            return FunctionParameter::VOID;
        });
    function.addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
    function.addParameter(PARAM_TYPE_SCRIPT_FUNCTION);

    run("give(enemy, function(given) isSame = given == enemy end)");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueOfTheOuterCallReturnedByAnInnerOneIsTheSameScriptValue)
{
    FunctionParameter outerValue;
    declare("inner", [&outerValue](const Parameters&) { return outerValue; })
        .addParameter(PARAM_TYPE_USER_TYPE, "Player");
    lua::LuaFunction& outer = declare(
        "outer",
        [&](const Parameters& parameters)
        {
            outerValue = parameters[0];
            callScript(parameters[1].getScriptObject());
            return FunctionParameter::VOID;
        });
    outer.addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
    outer.addParameter(PARAM_TYPE_SCRIPT_FUNCTION);

    run("outer(enemy, function() isSame = inner(player) == enemy end)");

    EXPECT_EQ(global("isSame"), "true");
}

TEST_F(UserTypeParameterTest, OwnedValueReturnedWithItsFlagOffIsAnotherBoxThatOwnsNothing)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    setInstance("kept", "Enemy", &m_enemy, false);

    run("passed = pass(kept) isSame = passed == kept");

    EXPECT_EQ(global("isSame"), "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
    EXPECT_FALSE(boxIn("kept").gcEnabled);
}

TEST_F(
    UserTypeParameterTest, OwnedValueReturnedAfterItsBoxGotAnotherObjectIsAnotherBoxThatOwnsNothing)
{
    lua::LuaInstanceBox& box = setInstance("kept", "Enemy", &m_enemy, true);
    declare(
        "pass",
        [&](const Parameters& parameters)
        {
            box.object = &m_player;
            return parameters[0];
        })
        .addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");

    run("passed = pass(kept) isSame = passed == kept");

    EXPECT_EQ(global("isSame"), "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
}

TEST_F(UserTypeParameterTest, OwnedValueKeptAfterItsCallIsPushedAsAnotherBoxThatOwnsNothing)
{
    FunctionParameter kept;
    declare(
        "keep",
        [&kept](const Parameters& parameters)
        {
            kept = parameters[0];
            return FunctionParameter::VOID;
        })
        .addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
    declare("give", [&kept](const Parameters&) { return kept; });

    run("keep(enemy) given = give() isSame = given == enemy");

    EXPECT_EQ(global("isSame"), "false");
    EXPECT_EQ(boxIn("given").object, &m_enemy);
    EXPECT_FALSE(boxIn("given").gcEnabled);
}

TEST_F(UserTypeParameterTest, KeptValueReturnedIsAnotherBoxThatOwnsNothing)
{
    declarePass(PARAM_TYPE_USER_TYPE);

    run("passed = pass(enemy) isSame = passed == enemy");

    EXPECT_EQ(global("isSame"), "false");
    EXPECT_EQ(boxIn("passed").object, &m_enemy);
    EXPECT_FALSE(boxIn("passed").gcEnabled);
}

TEST_F(UserTypeParameterTest, NullValueReturnedIsNoResult)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);

    run("results = select('#', pass(nil))");

    EXPECT_EQ(global("results"), "0");
}

TEST_F(UserTypeParameterTest, RegistryIsAsBeforeTheCalls)
{
    declarePass(PARAM_TYPE_USER_TYPE_OWNED);
    const int slots = countRegistrySlots();

    run("for i = 1, 100 do pass(enemy) end");

    EXPECT_EQ(countRegistrySlots(), slots);
}

} // namespace tbScripts::test
