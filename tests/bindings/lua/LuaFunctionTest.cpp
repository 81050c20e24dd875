#include "support/CountedObject.h"
#include "support/LuaFunctionFixture.h"

#include <memory>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

FunctionParameter giveSeven(const Parameters&)
{
    return 7;
}

} // namespace

class LuaFunctionTest : public LuaFunctionFixture
{
protected:
    /// Puts an empty table into the registry, as a namespace does, and makes it global `name`.
    void setTable(const char* key, const char* name)
    {
        lua_createtable(state(), 0, 0);
        lua_pushvalue(state(), -1);
        lua_setfield(state(), LUA_REGISTRYINDEX, key);
        lua_setglobal(state(), name);
    }

    std::unique_ptr<lua::LuaFunction> makeGlobal(const char* name)
    {
        auto function = std::make_unique<lua::LuaFunction>(name, handle());
        function->setFunction(giveSeven);
        return function;
    }

    std::unique_ptr<lua::LuaFunction> makeInTable(const char* name, const char* key)
    {
        auto function =
            std::make_unique<lua::LuaFunction>(name, lua::LuaOwner::table(key), handle());
        function->setFunction(giveSeven);
        return function;
    }
};

TEST_F(LuaFunctionTest, IsAGlobalFromItsMakingOn)
{
    const lua::LuaFunction function("spawn", handle());

    EXPECT_TRUE(function.isInstalled());
    EXPECT_EQ(function.getName(), "spawn");
    run("kind = type(spawn)");
    EXPECT_EQ(global("kind"), "function");
}

TEST_F(LuaFunctionTest, ReplacesWhatTheGlobalHeld)
{
    run("spawn = 'earlier'");

    const auto function = makeGlobal("spawn");

    run("result = spawn()");
    EXPECT_EQ(global("result"), "7");
}

TEST_F(LuaFunctionTest, OfANamespaceIsAFieldOfItsTableOnly)
{
    setTable("game", "game");

    const auto function = makeInTable("spawn", "game");

    run("result = game.spawn()");
    EXPECT_EQ(global("result"), "7");
    EXPECT_EQ(global("spawn"), "nil");
}

TEST_F(LuaFunctionTest, EndOfAGlobalOneMakesTheGlobalNil)
{
    auto function = makeGlobal("spawn");

    function.reset();

    EXPECT_EQ(global("spawn"), "nil");
}

TEST_F(LuaFunctionTest, EndMakesTheGlobalNilWhateverItHoldsByThen)
{
    auto function = makeGlobal("spawn");
    run("spawn = 'of the script'");

    function.reset();

    EXPECT_EQ(global("spawn"), "nil");
}

TEST_F(LuaFunctionTest, EndOfANamespacedOneClearsItsFieldOnly)
{
    setTable("game", "game");
    auto function = makeInTable("spawn", "game");
    run("game.lives = 3 spawn = 'global'");

    function.reset();

    run("count = 0 for key in pairs(game) do count = count + 1 end lives = game.lives");
    EXPECT_EQ(global("count"), "1");
    EXPECT_EQ(global("lives"), "3");
    EXPECT_EQ(global("spawn"), "global");
}

TEST_F(LuaFunctionTest, EndMakesTheFieldNilWhateverItHoldsByThen)
{
    setTable("game", "game");
    auto function = makeInTable("spawn", "game");
    run("game.spawn = 'of the script'");

    function.reset();

    run("left = game.spawn");
    EXPECT_EQ(global("left"), "nil");
}

TEST_F(LuaFunctionTest, MakingAndEndingLeaveNoRegistrySlot)
{
    const int slots = countRegistrySlots();

    for (int i = 0; i < 10; ++i)
        makeGlobal("spawn");

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaFunctionTest, WithoutTableForItsKeyIsLoggedAndNotInstalled)
{
    const lua::LuaFunction function("spawn", lua::LuaOwner::table("nowhere"), handle());

    EXPECT_FALSE(function.isInstalled());
    EXPECT_EQ(global("spawn"), "nil");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"attempt to index a nil value", "LuaEnvironment"}));
}

TEST_F(LuaFunctionTest, EndAfterItsTableIsGoneIsLogged)
{
    setTable("game", "game");
    auto function = makeInTable("spawn", "game");
    lua_pushnil(state());
    lua_setfield(state(), LUA_REGISTRYINDEX, "game");

    function.reset();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"attempt to index a nil value", "LuaEnvironment"}));
    EXPECT_EQ(runExpectingError("game.spawn()"), "Function 'spawn' does not exist anymore.");
}

TEST_F(LuaFunctionTest, GlobalThatCannotBeSetIsLoggedAndNotInstalled)
{
    run("setmetatable(_G, { __newindex = function() error('locked', 0) end })");
    const int slots = countRegistrySlots();

    const lua::LuaFunction function("spawn", handle());

    EXPECT_FALSE(function.isInstalled());
    EXPECT_EQ(countRegistrySlots(), slots);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"locked", "LuaEnvironment"}));
}

TEST_F(LuaFunctionTest, GlobalThatCannotBeRemovedIsLogged)
{
    auto function = makeGlobal("spawn");
    run("kept = spawn spawn = nil"
        " setmetatable(_G, { __newindex = function() error('locked', 0) end })");

    function.reset();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"locked", "LuaEnvironment"}));
    EXPECT_EQ(runExpectingError("kept()"), "Function 'spawn' does not exist anymore.");
}

TEST_F(LuaFunctionTest, IsDeadAlreadyWhileItsGlobalIsRemoved)
{
    auto function = makeGlobal("spawn");
    run("seen = {} local kept = spawn spawn = nil"
        " setmetatable(_G, { __newindex = function() seen[1] = select(2, pcall(kept)) end })");

    function.reset();

    EXPECT_EQ(runExpectingError("error(seen[1], 0)"), "Function 'spawn' does not exist anymore.");
}

TEST_F(LuaFunctionTest, IsSetThroughTheMetatableOfTheGlobals)
{
    run("names = '' setmetatable(_G, { __newindex = function(t, name, value)"
        "  rawset(t, 'names', names .. name) rawset(t, name, value) end })");

    const auto function = makeGlobal("spawn");

    EXPECT_EQ(global("names"), "spawn");
}

TEST_F(LuaFunctionTest, ClosureKeptByAScriptIsAScriptErrorAfterItsEnd)
{
    auto function = makeGlobal("spawn");
    run("kept = spawn");

    function.reset();

    EXPECT_EQ(runExpectingError("kept(1, 2)"), "Function 'spawn' does not exist anymore.");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(LuaFunctionTest, KeptClosureStaysDeadWhenTheNameIsUsedAgain)
{
    auto function = makeGlobal("spawn");
    run("kept = spawn");
    function.reset();

    function = makeGlobal("spawn");

    EXPECT_EQ(runExpectingError("kept()"), "Function 'spawn' does not exist anymore.");
    run("result = spawn()");
    EXPECT_EQ(global("result"), "7");
}

TEST_F(LuaFunctionTest, KeptClosureNamesTheWholeNameUpToAZero)
{
    auto function =
        std::make_unique<lua::LuaFunction>(tbMemory::StringView("sp\0awn", 6), handle());
    run("kept = sp");

    function.reset();

    EXPECT_EQ(runExpectingError("kept()"), "Function 'sp");
}

TEST_F(LuaFunctionTest, InstallingInTheSameStatePublishesNothingAgain)
{
    const auto function = makeGlobal("spawn");
    run("spawn = 'of the script'");

    const bool isInstalled = function->install(handle());

    EXPECT_TRUE(isInstalled);
    EXPECT_EQ(global("spawn"), "of the script");
}

TEST_F(LuaFunctionTest, InstallingInAnotherStateEndsItInTheFirst)
{
    const auto function = makeGlobal("spawn");
    run("kept = spawn");
    lua::LuaStateHandle other = lua::LuaStateHandle::open();

    const bool isInstalled = function->install(other);

    EXPECT_TRUE(isInstalled);
    EXPECT_EQ(global("spawn"), "nil");
    EXPECT_EQ(runExpectingError("kept()"), "Function 'spawn' does not exist anymore.");
    EXPECT_EQ(luaL_dostring(other.get(), "assert(spawn() == 7)"), 0);
    other.close();
}

TEST_F(LuaFunctionTest, OutlivesItsStateWithoutTouchingIt)
{
    auto function = makeGlobal("spawn");

    closeState();

    EXPECT_FALSE(function->isInstalled());
    function->addParameter(PARAM_TYPE_INT);
    function->reset();
    function.reset();
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(LuaFunctionTest, IsNotInstalledInAClosedState)
{
    const lua::LuaStateHandle closed = handle();
    closeState();

    const lua::LuaFunction function("spawn", closed);

    EXPECT_FALSE(function.isInstalled());
}

TEST_F(LuaFunctionTest, FinaliserThatRunsWhileTheStateClosesMayCallIt)
{
    std::vector<int> received;
    lua::LuaFunction& function = declare(
        "take",
        [&received](const Parameters& parameters)
        {
            received.push_back(parameters[0].getInt());
            received.push_back(static_cast<int>(parameters[1].getScriptObject().getType()));
            return FunctionParameter::VOID;
        });
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    run("keeper = newproxy(true) getmetatable(keeper).__gc = function() take(7, {}) end");

    closeState();

    EXPECT_THAT(received, ElementsAre(7, 0)); // a closing state keeps nothing any more
}

TEST_F(LuaFunctionTest, FinaliserThatRunsWhileTheStateClosesFindsADeadOne)
{
    auto function = makeGlobal("spawn");
    CountedObject::restart();
    function->setFunction([counted = CountedObject()](const Parameters&)
                          { return FunctionParameter::VOID; });
    run("local kept = spawn"
        " keeper = newproxy(true) getmetatable(keeper).__gc = function() kept() end");
    function.reset();

    closeState();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(LuaFunctionTest, DestroyedWhileTheStateClosesItIsDeadForLaterFinalisers)
{
    std::string seen;
    auto function = makeGlobal("spawn");
    declare(
        "destroySpawn",
        [&function](const Parameters&)
        {
            function.reset();
            return FunctionParameter::VOID;
        });
    declare(
        "note",
        [&seen](const Parameters& parameters)
        {
            seen = std::string(std::string_view(parameters[0].getString()));
            return FunctionParameter::VOID;
        })
        .addParameter(PARAM_TYPE_STRING);
    run("local kept = spawn"
        " keeper = newproxy(true) getmetatable(keeper).__gc = function()"
        "  destroySpawn() note(select(2, pcall(kept)))"
        " end");

    closeState();

    EXPECT_EQ(seen, "Function 'spawn' does not exist anymore.");
}

TEST_F(LuaFunctionTest, LastArgumentsStayInTheDeclaredParameters)
{
    lua::LuaFunction& function = declare("take", giveSeven);
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_STRING);

    run("take(5, 'spear')");

    const std::vector<FunctionParameter>& parameters = function.getDefinition().getParameters();
    EXPECT_EQ(parameters[0].getInt(), 5);
    EXPECT_EQ(parameters[1].getString(), "spear");
}

TEST_F(LuaFunctionTest, ResetGivesUpTheLastArguments)
{
    lua::LuaFunction& function = declare("take", giveSeven);
    function.addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    const int slots = countRegistrySlots();
    run("take({})");
    ASSERT_EQ(countRegistrySlots(), slots + 1);

    function.reset();

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaFunctionTest, EndGivesUpTheLastArguments)
{
    const int slots = countRegistrySlots();
    auto function = makeGlobal("take");
    function->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    run("take(print)");

    function.reset();

    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaFunctionTest, MismatchStopsReadingAtTheWrongArgument)
{
    lua::LuaFunction& function = declare("take", giveSeven);
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_INT);
    run("take(1, 2, 3)");

    run("pcall(take, 4, 'x', 6)");

    const std::vector<FunctionParameter>& parameters = function.getDefinition().getParameters();
    EXPECT_EQ(parameters[0].getInt(), 4);
    EXPECT_EQ(parameters[1].getInt(), 0);
    EXPECT_EQ(parameters[2].getInt(), 3);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

} // namespace tbScripts::test
