// Instances that something still holds when their environment ends.

#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <algorithm>

namespace tbScripts::test
{

namespace
{

struct Keeper
{
    const char* row;
    const char* keep; // a script that keeps the values of `list`, a local
};

const auto KEEPERS = ::testing::Values(
    Keeper{"Nobody", ""},
    Keeper{"Global", "kept = list"},
    Keeper{"LoadedModule", "package.loaded.module = list"},
    Keeper{
        "FunctionOfALoadedModule", "package.loaded.module = { get = function() return list end }"},
    Keeper{
        "SuspendedCoroutine",
        "kept = coroutine.create(function() local mine = list coroutine.yield() return mine end) "
        "coroutine.resume(kept)"},
    Keeper{
        "CoroutineThatALibraryKeeps",
        "string.kept = coroutine.wrap(function() local mine = list coroutine.yield() end) "
        "string.kept()"},
    Keeper{"UpvalueOfACallback", "function callback() return list end register(callback)"},
    Keeper{"HostReference", "register(function() return list end) keep(list)"},
    Keeper{"Registry", "debug.getregistry().mine = list"},
    Keeper{"MetatableOfTexts", "getmetatable('').mine = list"},
    Keeper{"EnvironmentOfAFunction", "kept = setfenv(function() end, { list = list })"},
    Keeper{"TypesTable", "Vec.mine = list"},
    Keeper{"CycleOfInstances", "local a = { list } a.a = a"});

} // namespace

class UserTypeTeardownTest : public OnRows<UserTypeFixture, Keeper>
{
protected:
    UserTypeTeardownTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod("length", {}, returning(1));
        vec().setOperator(BUILT_IN_FUNCTION::UNM)->setFunction(returning(2));
        setHostObject("host", m_hostObject);
        declareKeep("register", PARAM_TYPE_SCRIPT_FUNCTION);
        declareKeep("keep", PARAM_TYPE_SCRIPT_OBJECT);
    }

    /// Declares a host function that keeps its argument, beyond the environment.
    void declareKeep(const std::string& name, FUNCTION_PARAMETER_TYPE type)
    {
        declare(
            name,
            {type},
            doing([this](const Parameters& parameters)
                  { m_references.push_back(parameters[0].getScriptObject()); }));
    }

    std::vector<ScriptObjectReference> m_references;
};

TEST_P(UserTypeTeardownTest, DestroysEachOwnedInstanceOnce)
{
    run(std::string("local list = {} for i = 1, 10000 do list[i] = Vec.new() end ") +
        GetParam().keep);

    destroyEnvironment();

    EXPECT_EQ(m_made.size(), 10000U);
    EXPECT_EQ(m_destroyed.size(), 10000U);
    std::sort(m_destroyed.begin(), m_destroyed.end());
    EXPECT_EQ(std::adjacent_find(m_destroyed.begin(), m_destroyed.end()), m_destroyed.end());
}

TEST_P(UserTypeTeardownTest, LeavesWhatTheScriptDoesNotOwn)
{
    run(std::string("local list = { host, Vec.new() } list[2]:disableGc() ") + GetParam().keep);
    destroyEnvironment();
    isDestroyed({});
}

TEST_P(UserTypeTeardownTest, DestroysInstancesThatWereDestroyedByHandNoMore)
{
    run(std::string("local list = { Vec.new() } list[1]:__gc() ") + GetParam().keep);
    destroyEnvironment();
    isDestroyed({0});
}

// Whatever finalisers do to types and instances meanwhile, at any time of the end.
TEST_P(UserTypeTeardownTest, MayBeFullOfFinalisersThatUseTheType)
{
    run(std::string(
            "local Vec, pcall, host = Vec, pcall, host "
            "local new, length, read, write, finalise, enableGc, disableGc = Vec.new, Vec.length, "
            "    Vec.__index, Vec.__newindex, Vec.__gc, Vec.enableGc, Vec.disableGc "
            "local function use(v) "
            "    pcall(read, v, 'x') pcall(read, v, 1) pcall(read, v, 'length') "
            "    pcall(write, v, 'x', 1) pcall(write, v, 1, 1) pcall(length, v) "
            "    pcall(function() return v.x + v[1] + v:length() - -v end) "
            "    pcall(disableGc, v) pcall(enableGc, v) pcall(finalise, v) pcall(new) "
            "end "
            "local list = {} "
            "for i = 1, 50 do "
            "    local v, proxy = Vec.new(), newproxy(true) "
            "    getmetatable(proxy).__gc = function() use(v) use(proxy) use(host) use(Vec.new) "
            "end "
            "    list[i] = { proxy, v, Vec.new() } "
            "end ") +
        GetParam().keep);

    destroyEnvironment();
    forgetLog(); // that dead instances are none

    std::vector<Vec*> made{&m_hostObject}; // which the finalisers have enabled
    for (Vec& object : m_made)
        made.push_back(&object);
    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAreArray(made));
}

INSTANTIATE_TEST_SUITE_P(Keepers, UserTypeTeardownTest, KEEPERS, RowName());

} // namespace tbScripts::test
