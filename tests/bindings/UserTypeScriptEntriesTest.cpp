// What scripts do to the table of a type, which is theirs as much as the host's.

#include "support/UserTypeFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class UserTypeScriptEntriesTest : public UserTypeFixture
{
protected:
    UserTypeScriptEntriesTest()
    {
        declareField("x", &Vec::x);
        declareMethod("length", {}, [](const Parameters&) { return "host"; });
        setHostObject("v", m_hostObject);
    }
};

TEST_F(UserTypeScriptEntriesTest, FunctionIsAMethodOfInstances)
{
    run("function Vec.twice(self) return 2 * self.x end");
    m_hostObject.x = 3;

    EXPECT_EQ(evaluate("v:twice()"), "6");
    EXPECT_EQ(evaluate("Vec.new():twice()"), "0");
}

TEST_F(UserTypeScriptEntriesTest, ReplacedOneIsFoundAtOnce)
{
    run("Vec.ext = 1  local found = v.ext");

    run("Vec.ext = 2");

    EXPECT_EQ(evaluate("v.ext"), "2");
}

TEST_F(UserTypeScriptEntriesTest, RemovedOneReadsAsNil)
{
    run("Vec.ext = 1  local found = v.ext");

    run("Vec.ext = nil");

    EXPECT_EQ(evaluate("v.ext"), "nil");
    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 'ext'))"), "0");
}

TEST_F(UserTypeScriptEntriesTest, OneMadeAfterItWasMissedIsFound)
{
    run("local missed = v.ext");

    run("Vec.ext = 1");

    EXPECT_EQ(evaluate("v.ext"), "1");
}

TEST_F(UserTypeScriptEntriesTest, OneRemovedAndMadeAgainIsFound)
{
    run("Vec.ext = 1 local a = v.ext  Vec.ext = nil local b = v.ext");

    run("Vec.ext = 2");

    EXPECT_EQ(evaluate("v.ext"), "2");
}

TEST_F(UserTypeScriptEntriesTest, ChangesAreSeenByLoopsThatGotHot)
{
    run("Vec.ext = 1  function read() local e for i = 1, 1000 do e = v.ext end return e end");
    EXPECT_EQ(evaluate("read()"), "1");

    run("Vec.ext = 2");

    EXPECT_EQ(evaluate("read()"), "2");
    run("Vec.ext = nil");
    EXPECT_EQ(evaluate("read()"), "nil");
}

TEST_F(UserTypeScriptEntriesTest, FalseIsAValue)
{
    run("Vec.flag = false");

    EXPECT_EQ(evaluate("v.flag"), "false");
    EXPECT_EQ(evaluate("v.flag"), "false");
}

TEST_F(UserTypeScriptEntriesTest, FieldComesBeforeThem)
{
    run("Vec.x = 'mine'");

    EXPECT_EQ(evaluate("v.x"), "0");
}

TEST_F(UserTypeScriptEntriesTest, FunctionInAMethodsPlaceWins)
{
    run("local found = v.length  function Vec.length(self) return 'script' end");

    EXPECT_EQ(evaluate("v:length()"), "script");
    EXPECT_NE(vec().getMethod("length"), nullptr);
}

TEST_F(UserTypeScriptEntriesTest, MethodSetAgainLeavesTheFunctionInItsPlace)
{
    run("function Vec.length(self) return 'script' end");

    declareMethod("length", {}, [](const Parameters&) { return "host again"; });
    m_log.takeEntries(); // that it is registered already

    EXPECT_EQ(evaluate("v:length()"), "script");
}

TEST_F(UserTypeScriptEntriesTest, RemovedMethodReadsAsOneNil)
{
    run("Vec.length = nil");

    EXPECT_EQ(evaluate("v.length"), "nil");
    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 'length'))"), "1");
}

TEST_F(UserTypeScriptEntriesTest, OperatorOfAScriptWorks)
{
    run("function Vec.__add(a, b) return 'sum' end");

    EXPECT_EQ(evaluate("v + v"), "sum");
    EXPECT_EQ(evaluate("v + 1"), "sum");
}

TEST_F(UserTypeScriptEntriesTest, ReplacedFinaliserDestroysNothing)
{
    run("function Vec.__gc() end  Vec.new()");

    collect();
    destroyEnvironment();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(UserTypeScriptEntriesTest, NewDestructorBringsTheFinaliserBack)
{
    run("Vec.__gc = nil");
    setMaker(vec());

    run("Vec.new()");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeScriptEntriesTest, ReplacedReadIsTheScripts)
{
    run("function Vec.__index(self, key) return 'mine ' .. key end");

    EXPECT_EQ(evaluate("v.x"), "mine x");
}

TEST_F(UserTypeScriptEntriesTest, MetatableOfTheTypeMakesItCallable)
{
    run("setmetatable(Vec, { __call = function(class) return class.new() end })  w = Vec()");

    EXPECT_EQ(evaluate("getmetatable(w) == Vec"), "true");
    EXPECT_EQ(m_made.size(), 1U);
}

TEST_F(UserTypeScriptEntriesTest, MetatableOfTheTypeDoesNotServeInstances)
{
    run("setmetatable(Vec, { __index = function() return 'class' end })");

    EXPECT_EQ(evaluate("Vec.unknown"), "class");
    EXPECT_EQ(evaluate("v.unknown"), "nil");
}

TEST_F(UserTypeScriptEntriesTest, MetatableOfTheTypeSeesNewMethods)
{
    run("seen = {} "
        "setmetatable(Vec, { __newindex = function(class, key, value) "
        "    seen[#seen + 1] = key  rawset(class, key, value) end })");

    declareMethod("grow", {}, [](const Parameters&) { return 1; });
    declareField("y", &Vec::y);
    setMaker(vec());

    EXPECT_EQ(evaluate("table.concat(seen, ' ')"), "grow");
    EXPECT_EQ(evaluate("v:grow()"), "1");
}

TEST_F(UserTypeScriptEntriesTest, MetatableThatHasTheSameMethodDeclaredLeavesItOnce)
{
    Function* inner = nullptr;
    declareAction("declareGrow", [&] { inner = vec().setMethod("grow", false); });
    run("local declare = declareGrow "
        "setmetatable(Vec, { __newindex = function(class, key, value) "
        "    local declareOnce = declare  declare = function() end "
        "    declareOnce()  rawset(class, key, value) end })");

    Function* const outer = vec().setMethod("grow", false);
    outer->setFunction([](const Parameters&) { return "grown"; });

    EXPECT_EQ(outer, inner);
    EXPECT_EQ(vec().getMethod("grow"), outer);
    EXPECT_EQ(evaluate("v:grow()"), "grown");
}

TEST_F(UserTypeScriptEntriesTest, MetatableThatRaisesLeavesAMethodUndeclared)
{
    run("setmetatable(Vec, { __newindex = function() error('no', 0) end })");

    Function* const method = vec().setMethod("grow", false);

    EXPECT_EQ(method, nullptr);
    EXPECT_EQ(vec().getMethod("grow"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"no", "LuaEnvironment"}));
}

TEST_F(UserTypeScriptEntriesTest, MetatableThatRaisesHindersNoField)
{
    run("setmetatable(Vec, { __newindex = function() error('no', 0) end })");

    declareField("y", &Vec::y);
    run("v.y = 2");

    EXPECT_EQ(evaluate("v.y"), "2");
}

TEST_F(UserTypeScriptEntriesTest, TypeUnderAnotherNameWorks)
{
    run("Other, Vec = Vec, nil  w = Other.new()  w.x = 2");

    EXPECT_EQ(evaluate("w.x"), "2");
    EXPECT_EQ(environment().getObject("w", "Vec"), &m_made[0]);
}

class UserTypeDerivedTableTest : public UserTypeScriptEntriesTest
{
protected:
    UserTypeDerivedTableTest() { run("Derived = setmetatable({}, Vec)"); }
};

TEST_F(UserTypeDerivedTableTest, FindsTheFactory)
{
    run("w = Derived.new()");

    EXPECT_EQ(environment().getObject("w", "Vec"), &m_made[0]);
}

TEST_F(UserTypeDerivedTableTest, FindsMethodsAndRawEntries)
{
    run("Vec.ext = 'raw'");

    EXPECT_EQ(evaluate("Derived.length == Vec.length"), "true");
    EXPECT_EQ(evaluate("Derived.ext"), "raw");
    EXPECT_EQ(evaluate("Derived.__name"), "Vec");
    EXPECT_EQ(evaluate("Derived.unknown"), "nil");
}

TEST_F(UserTypeDerivedTableTest, HasNoFields)
{
    EXPECT_EQ(errorOf("local x = Derived.x"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(errorOf("Derived.x = 1"), "Expected an instance of user type 'Vec'.");
}

TEST_F(UserTypeDerivedTableTest, CannotBeGivenNewEntriesBecauseWritesAreDropped)
{
    run("Derived.mine = 1  function Derived.area() end");

    EXPECT_EQ(evaluate("rawget(Derived, 'mine')"), "nil");
    EXPECT_EQ(evaluate("Derived.area"), "nil");
}

TEST_F(UserTypeDerivedTableTest, OwnEntriesComeFirst)
{
    run("rawset(Derived, 'x', 'own')");

    EXPECT_EQ(evaluate("Derived.x"), "own");
}

TEST_F(UserTypeDerivedTableTest, UnboundIndicesBehaveAsOnAnInstance)
{
    run("Derived[1] = 5");

    EXPECT_EQ(evaluate("Derived[1]"), "nil");
}

TEST_F(UserTypeDerivedTableTest, BoundIndicesNeedAnInstance)
{
    declareArrayAccess();

    EXPECT_EQ(errorOf("local x = Derived[1]"), "Expected an instance of user type 'Vec'.");
    EXPECT_EQ(errorOf("Derived[1] = 1"), "Expected an instance of user type 'Vec'.");
}

TEST_F(UserTypeDerivedTableTest, IsNoInstance)
{
    EXPECT_EQ(environment().getObject("Derived", "Vec"), nullptr);
    EXPECT_EQ(
        errorOf("Vec.length(Derived)"), "Error l.1 while calling length. Expected Vec, got table.");
    m_log.takeEntries(); // that mismatch
}

TEST_F(UserTypeDerivedTableTest, IsNotFinalised)
{
    run("Derived = nil");

    collect();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

} // namespace tbScripts::test
