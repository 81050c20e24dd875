#include "support/CountedObject.h"
#include "support/LuaFunctionFixture.h"

#include <memory>

namespace tbScripts::test
{

namespace
{

const char* const GONE = "Function 'spawn' does not exist anymore.";
const LogEntry NO_TABLE{"attempt to index a nil value", "LuaEnvironment"};
const LogEntry LOCKED{"locked", "LuaEnvironment"};

} // namespace

class LuaFunctionTest : public LuaFunctionFixture
{
protected:
    /// Puts an empty table into the registry, as a namespace does, and makes it global `game`.
    void setTable()
    {
        lua_createtable(state(), 0, 0);
        lua_pushvalue(state(), -1);
        lua_setfield(state(), LUA_REGISTRYINDEX, "game");
        lua_setglobal(state(), "game");
    }

    /// Creates `spawn`, which returns 7, as a global or in the table.
    void makeGlobal()
    {
        m_function = std::make_unique<lua::LuaFunction>("spawn", handle());
        m_function->setFunction(returning(7));
    }

    void makeInTable()
    {
        setTable();
        m_function =
            std::make_unique<lua::LuaFunction>("spawn", lua::LuaOwner::table("game"), handle());
        m_function->setFunction(returning(7));
    }

    void lockGlobals()
    {
        run("setmetatable(_G, { __newindex = function() error('locked', 0) end })");
    }

    std::unique_ptr<lua::LuaFunction> m_function;
};

TEST_F(LuaFunctionTest, IsAGlobalFromItsMakingOn)
{
    const lua::LuaFunction function("spawn", handle());
    EXPECT_TRUE(function.isInstalled());
    EXPECT_EQ(function.getName(), "spawn");
    is("type(spawn)", "function");
}

TEST_F(LuaFunctionTest, ReplacesWhatTheGlobalHeld)
{
    run("spawn = 'earlier'");
    makeGlobal();
    is("spawn()", "7");
}

TEST_F(LuaFunctionTest, OfANamespaceIsAFieldOfItsTableOnly)
{
    makeInTable();
    is("game.spawn()", "7");
    EXPECT_EQ(global("spawn"), "nil");
}

TEST_F(LuaFunctionTest, DestructionMakesTheGlobalNilWhateverItHolds)
{
    for (const char* const code : {"", "spawn = 'of the script'"})
    {
        makeGlobal();
        run(code);
        m_function.reset();
        EXPECT_EQ(global("spawn"), "nil");
    }
}

TEST_F(LuaFunctionTest, DestructionOfANamespacedOneClearsItsFieldOnlyWhateverItHolds)
{
    for (const char* const code : {"", "game.spawn = 'of the script'"})
    {
        makeInTable();
        run(std::string("game.lives = 3 spawn = 'global' ") + code);
        m_function.reset();
        run("count = 0 for key in pairs(game) do count = count + 1 end");
        EXPECT_EQ(global("count"), "1");
        is("game.lives", "3");
        EXPECT_EQ(global("spawn"), "global");
    }
}

TEST_F(LuaFunctionTest, LeavesNoRegistrySlot)
{
    const int slots = countRegistrySlots();
    for (int i = 0; i < 10; ++i)
        makeGlobal();
    m_function.reset();
    EXPECT_EQ(countRegistrySlots(), slots);
}

TEST_F(LuaFunctionTest, WithoutTableForItsKeyIsLoggedAndNotInstalled)
{
    const lua::LuaFunction function("spawn", lua::LuaOwner::table("nowhere"), handle());
    EXPECT_FALSE(function.isInstalled());
    EXPECT_EQ(global("spawn"), "nil");
    expectLogged({NO_TABLE});
}

TEST_F(LuaFunctionTest, DestructionAfterThatOfItsTableIsLogged)
{
    makeInTable();
    lua_pushnil(state());
    lua_setfield(state(), LUA_REGISTRYINDEX, "game");
    m_function.reset();
    expectLogged({NO_TABLE});
    raises("game.spawn()", GONE);
}

TEST_F(LuaFunctionTest, GlobalThatCannotBeSetIsLoggedAndNotInstalled)
{
    lockGlobals();
    const int slots = countRegistrySlots();
    const lua::LuaFunction function("spawn", handle());
    EXPECT_FALSE(function.isInstalled());
    EXPECT_EQ(countRegistrySlots(), slots);
    expectLogged({LOCKED});
}

TEST_F(LuaFunctionTest, GlobalThatCannotBeRemovedIsLogged)
{
    makeGlobal();
    run("kept = spawn spawn = nil");
    lockGlobals();
    m_function.reset();
    expectLogged({LOCKED});
    raises("kept()", GONE);
}

TEST_F(LuaFunctionTest, IsDeadAlreadyWhileItsGlobalIsRemoved)
{
    makeGlobal();
    run("seen = {} local kept = spawn spawn = nil"
        " setmetatable(_G, { __newindex = function() seen[1] = select(2, pcall(kept)) end })");
    m_function.reset();
    raises("error(seen[1], 0)", GONE);
}

TEST_F(LuaFunctionTest, IsSetThroughTheMetatableOfTheGlobals)
{
    run("names = '' setmetatable(_G, { __newindex = function(t, name, value)"
        "  rawset(t, 'names', names .. name) rawset(t, name, value) end })");
    makeGlobal();
    EXPECT_EQ(global("names"), "spawn");
}

TEST_F(LuaFunctionTest, ClosureKeptByAScriptIsAScriptErrorAfterItsDestruction)
{
    makeGlobal();
    run("kept = spawn");
    m_function.reset();
    raises("kept(1, 2)", GONE);
    expectLogged({});

    makeGlobal(); // stays dead when the name is used again
    raises("kept()", GONE);
    is("spawn()", "7");
}

TEST_F(LuaFunctionTest, KeptClosureNamesTheWholeNameUpToAZero)
{
    m_function = std::make_unique<lua::LuaFunction>(tbMemory::StringView("sp\0awn", 6), handle());
    run("kept = sp");
    m_function.reset();
    raises("kept()", "Function 'sp");
}

TEST_F(LuaFunctionTest, InstallingInTheSameStatePublishesNothingAgain)
{
    makeGlobal();
    run("spawn = 'of the script'");
    EXPECT_TRUE(m_function->install(handle()));
    EXPECT_EQ(global("spawn"), "of the script");
}

TEST_F(LuaFunctionTest, InstallingInAnotherStateRemovesItFromTheFirst)
{
    makeGlobal();
    run("kept = spawn");
    lua::LuaStateHandle other = lua::LuaStateHandle::open();
    EXPECT_TRUE(m_function->install(other));
    EXPECT_EQ(global("spawn"), "nil");
    raises("kept()", GONE);
    EXPECT_EQ(luaL_dostring(other.get(), "assert(spawn() == 7)"), 0);
    other.close();
}

TEST_F(LuaFunctionTest, OutlivesItsStateWithoutTouchingIt)
{
    makeGlobal();
    closeState();
    EXPECT_FALSE(m_function->isInstalled());
    m_function->addParameter(PARAM_TYPE_INT);
    m_function->reset();
    m_function.reset();
}

TEST_F(LuaFunctionTest, IsNotInstalledInAClosedState)
{
    const lua::LuaStateHandle closed = handle();
    closeState();
    EXPECT_FALSE(lua::LuaFunction("spawn", closed).isInstalled());
}

TEST_F(LuaFunctionTest, FinaliserThatRunsWhileTheStateClosesMayCallIt)
{
    std::vector<int> received;
    lua::LuaFunction& function = declare(
        "take",
        doing(
            [&received](const Parameters& parameters)
            {
                received.push_back(parameters[0].getInt());
                received.push_back(static_cast<int>(parameters[1].getScriptObject().getType()));
            }));
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    run("keeper = newproxy(true) getmetatable(keeper).__gc = function() take(7, {}) end");
    closeState();
    EXPECT_THAT(received, ElementsAre(7, 0)); // a closing state keeps nothing any more
}

TEST_F(LuaFunctionTest, FinaliserThatRunsWhileTheStateClosesFindsADeadOne)
{
    makeGlobal();
    CountedObject::restart();
    m_function->setFunction(doing([counted = CountedObject()] {}));
    run("local kept = spawn"
        " keeper = newproxy(true) getmetatable(keeper).__gc = function() kept() end");
    m_function.reset();
    closeState();
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(LuaFunctionTest, DestroyedWhileTheStateClosesItIsDeadForLaterFinalisers)
{
    std::vector<std::string> seen;
    makeGlobal();
    declare("destroySpawn", doing([this] { m_function.reset(); }));
    declare("note", recording(seen)).addParameter(PARAM_TYPE_STRING);
    run("local kept = spawn"
        " keeper = newproxy(true) getmetatable(keeper).__gc = function()"
        "  destroySpawn() note(select(2, pcall(kept)))"
        " end");
    closeState();
    EXPECT_THAT(seen, ElementsAre(GONE));
}

TEST_F(LuaFunctionTest, LastArgumentsStayInTheDeclaredParameters)
{
    lua::LuaFunction& function = declare("take", returning(7));
    function.addParameter(PARAM_TYPE_INT);
    function.addParameter(PARAM_TYPE_STRING);
    run("take(5, 'spear')");
    EXPECT_EQ(valuesOf(function.getDefinition().getParameters()), "5, spear");
}

TEST_F(LuaFunctionTest, ResetAndDestructionGiveUpTheLastArguments)
{
    const int slotsBefore = countRegistrySlots();
    makeGlobal();
    const int slots = countRegistrySlots();
    m_function->addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    run("spawn({})");
    ASSERT_EQ(countRegistrySlots(), slots + 1);
    m_function->reset();
    EXPECT_EQ(countRegistrySlots(), slots);

    m_function->addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    m_function->setFunction(returning(7));
    run("spawn(print)");
    m_function.reset();
    EXPECT_EQ(countRegistrySlots(), slotsBefore);
}

TEST_F(LuaFunctionTest, MismatchStopsReadingAtTheWrongArgument)
{
    lua::LuaFunction& function = declare("take", returning(7));
    for (int i = 0; i < 3; ++i)
        function.addParameter(PARAM_TYPE_INT);
    run("take(1, 2, 3)");
    run("pcall(take, 4, 'x', 6)");
    EXPECT_EQ(valuesOf(function.getDefinition().getParameters()), "4, 0, 3");
    expectLogCount(1);
}

} // namespace tbScripts::test
