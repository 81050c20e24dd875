// What scripts do to the table of a type, which is theirs as much as the host's.

#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

class UserTypeScriptEntriesTest : public UserTypeFixture
{
protected:
    UserTypeScriptEntriesTest()
    {
        declareField("x", &Vec::x);
        declareMethod("length", {}, returning("host"));
        setHostObject("v", m_hostObject);
    }
};

TEST_F(UserTypeScriptEntriesTest, MetatableThatHasTheSameMethodDeclaredLeavesItOnce)
{
    Function* inner = nullptr;
    declareAction("declareGrow", [&] { inner = vec().setMethod("grow", false); });
    run("local declare = declareGrow "
        "setmetatable(Vec, { __newindex = function(class, key, value) "
        "    local declareOnce = declare  declare = function() end "
        "    declareOnce()  rawset(class, key, value) end })");

    Function* const outer = vec().setMethod("grow", false);
    outer->setFunction(returning("grown"));

    EXPECT_EQ(outer, inner);
    EXPECT_EQ(vec().getMethod("grow"), outer);
    is("v:grow()", "grown");
}

class UserTypeDerivedTableTest : public UserTypeScriptEntriesTest
{
protected:
    UserTypeDerivedTableTest() { run("Derived = setmetatable({}, Vec)"); }
};

namespace
{

TypeStep maker()
{
    return [](auto& test) { test.setMaker(test.vec()); };
}

const char* const RAISING = "setmetatable(Vec, { __newindex = function() error('no', 0) end })";

const Facts<UserTypeScriptEntriesTest> FACTS(
    "UserTypeScriptEntriesTest",
    {
        {"FunctionIsAMethodOfInstances",
         {run("function Vec.twice(self) return 2 * self.x end  v.x = 3"),
          is("v:twice()", "6"),
          is("Vec.new():twice()", "0")}},
        {"ReplacedOneIsFoundAtOnce",
         {run("Vec.ext = 1  local found = v.ext"), run("Vec.ext = 2"), is("v.ext", "2")}},
        {"RemovedOneReadsAsNil",
         {run("Vec.ext = 1  local found = v.ext"),
          run("Vec.ext = nil"),
          is("v.ext", "nil"),
          is("select('#', Vec.__index(v, 'ext'))", "0")}},
        {"OneMadeAfterItWasMissedIsFound",
         {run("local missed = v.ext"), run("Vec.ext = 1"), is("v.ext", "1")}},
        {"OneRemovedAndMadeAgainIsFound",
         {run("Vec.ext = 1 local a = v.ext  Vec.ext = nil local b = v.ext"),
          run("Vec.ext = 2"),
          is("v.ext", "2")}},
        {"ChangesAreSeenByLoopsThatGotHot",
         {run("Vec.ext = 1 function read() local e for i = 1, 1000 do e = v.ext end return e end"),
          is("read()", "1"),
          run("Vec.ext = 2"),
          is("read()", "2"),
          run("Vec.ext = nil"),
          is("read()", "nil")}},
        {"FalseIsAValue", {run("Vec.flag = false"), is("v.flag", "false"), is("v.flag", "false")}},
        {"FieldComesBeforeThem", {run("Vec.x = 'mine'"), is("v.x", "0")}},
        {"FunctionInAMethodsPlaceWins",
         {run("local found = v.length  function Vec.length(self) return 'script' end"),
          is("v:length()", "script"),
          [](auto& test) { EXPECT_TRUE(test.vec().getMethod("length")); }}},
        {"MethodSetAgainLeavesTheFunctionInItsPlace",
         {run("function Vec.length(self) return 'script' end"),
          method("length", "host again"),
          forgetLog(), // that it is registered already
          is("v:length()", "script")}},
        {"RemovedMethodReadsAsOneNil",
         {run("Vec.length = nil"),
          is("v.length", "nil"),
          is("select('#', Vec.__index(v, 'length'))", "1")}},
        {"OperatorOfAScriptWorks",
         {run("function Vec.__add(a, b) return 'sum' end"),
          is("v + v", "sum"),
          is("v + 1", "sum")}},
        {"EnableGcCanBeTakenAway",
         {run("Vec.enableGc = nil"),
          [](auto& test)
          {
              EXPECT_THAT(
                  test.errorOf("v:enableGc()"),
                  ::testing::HasSubstr("method 'enableGc' (a nil value)"));
          }}},
        {"ReplacedFinaliserIsPutBackBeforeTheHostCollects",
         {run("function Vec.__gc() end  Vec.new()"), collect(), isDestroyed({0})}},
        {"ReplacedFinaliserIsPutBackBeforeTheTeardown",
         {run("Vec.new()  function Vec.__gc() while true do end end"),
          destroyEnvironment(),
          isDestroyed({0})}},
        {"FinaliserOfAnotherTypeIsReplacedToo",
         {[](auto& test) { test.declareType("Other"); },
          run("Vec.new()  Vec.__gc = Other.__gc"),
          collect(),
          isDestroyed({0})}},
        {"ReplacedFinaliserIsPutBackBeforeTheInterpreterCloses",
         {run("package.loaded.kept = Vec.new()  function Vec.__gc() while true do end end"),
          restart(),
          isDestroyed({0})}},
        {"RemovedFinaliserIsPutBackBeforeANamespaceIsCleared",
         {run("Vec.new()  Vec.__gc = nil"),
          [](auto& test) { test.environment().setNamespace("other")->clear(); },
          isDestroyed({0})}},
        {"ReplacedFinaliserIsPutBackWhenTheTypeIsReleased",
         {[](auto& test) { test.declareType("world::Late"); },
          run("late = world.Late.new()  function world.Late.__gc() while true do end end"),
          [](auto& test) { test.environment().getNamespace("world")->release(); },
          run("late = nil"),
          collect(),
          isDestroyed({0})}},
        {"FinaliserThatReleasesTypesMeanwhileIsHarmless",
         {[](auto& test)
          {
              test.declareType("world::Late");
              test.declareAction(
                  "release", [&test] { test.environment().getNamespace("world")->release(); });
          },
          run("for i = 1, 50 do getmetatable(newproxy(true)).__gc = release end"
              " Vec.__gc = nil  world.Late.__gc = nil"),
          collect()}},
        {"NewDestructorBringsTheFinaliserBack",
         {run("Vec.__gc = nil"), maker(), run("Vec.new()"), collect(), isDestroyed({0})}},
        {"ReplacedReadIsTheScripts",
         {run("function Vec.__index(self, key) return 'mine ' .. key end"), is("v.x", "mine x")}},
        {"MetatableOfTheTypeMakesItCallable",
         {run("setmetatable(Vec, { __call = function(class) return class.new() end })  w = Vec()"),
          is("getmetatable(w) == Vec", "true"),
          [](auto& test) { EXPECT_EQ(test.m_made.size(), 1U); }}},
        {"MetatableOfTheTypeDoesNotServeInstances",
         {run("setmetatable(Vec, { __index = function() return 'class' end })"),
          is("Vec.unknown", "class"),
          is("v.unknown", "nil")}},
        {"MetatableOfTheTypeSeesNewMethods",
         {run("seen = {} "
              "setmetatable(Vec, { __newindex = function(class, key, value) "
              "    seen[#seen + 1] = key  rawset(class, key, value) end })"),
          method("grow", 1),
          field("y", &Vec::y),
          maker(),
          is("table.concat(seen, ' ')", "grow"),
          is("v:grow()", "1")}},
        {"MetatableThatRaisesLeavesAMethodUndeclared",
         {run(RAISING),
          [](auto& test) { EXPECT_EQ(test.vec().setMethod("grow", false), nullptr); },
          [](auto& test) { EXPECT_EQ(test.vec().getMethod("grow"), nullptr); },
          logs("no", "LuaEnvironment")}},
        {"MetatableThatRaisesHindersNoField",
         {run(RAISING), field("y", &Vec::y), run("v.y = 2"), is("v.y", "2")}},
        {"TypeUnderAnotherNameWorks",
         {run("Other, Vec = Vec, nil  w = Other.new()  w.x = 2"),
          is("w.x", "2"),
          isObject("w", 0)}},
    });

constexpr const char* NO_VEC = "Expected an instance of user type 'Vec'.";

const Facts<UserTypeDerivedTableTest> DERIVED_FACTS(
    "UserTypeDerivedTableTest",
    {
        {"FindsTheFactory", {run("w = Derived.new()"), isObject("w", 0)}},
        {"FindsMethodsAndRawEntries",
         {run("Vec.ext = 'raw'"),
          is("Derived.length == Vec.length", "true"),
          is("Derived.ext", "raw"),
          is("Derived.__name", "Vec"),
          is("Derived.unknown", "nil")}},
        {"HasNoFields", {raises("local x = Derived.x", NO_VEC), raises("Derived.x = 1", NO_VEC)}},
        {"CannotBeGivenNewEntriesBecauseWritesAreDropped",
         {run("Derived.mine = 1  function Derived.area() end"),
          is("rawget(Derived, 'mine')", "nil"),
          is("Derived.area", "nil")}},
        {"OwnEntriesComeFirst", {run("rawset(Derived, 'x', 'own')"), is("Derived.x", "own")}},
        {"UnboundIndicesBehaveAsOnAnInstance", {run("Derived[1] = 5"), is("Derived[1]", "nil")}},
        {"BoundIndicesNeedAnInstance",
         {arrayAccess(), raises("local x = Derived[1]", NO_VEC), raises("Derived[1] = 1", NO_VEC)}},
        {"IsNoInstance",
         {isObject("Derived", NO_OBJECT),
          raises("Vec.length(Derived)", "Error l.1 while calling length. Expected Vec, got table."),
          forgetLog()}}, // that mismatch
        {"IsNotFinalised", {run("Derived = nil"), collect(), isDestroyed({})}},
    });

} // namespace

} // namespace tbScripts::test
