// Clearing a namespace: what scripts see of it is removed, what the host declared stays.

#include "support/CountedObject.h"
#include "support/NamespaceSteps.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectReference.h>

namespace tbScripts::test
{

using NamespaceClearTest = NamespaceFixture;

TEST_F(NamespaceClearTest, KeepsWhatTheHostDeclared)
{
    Namespace* const inner = scope().setNamespace("b");
    UserType* const type = scope().setUserType("T");
    UserType* const innerType = inner->setUserType("T");
    scope().clear();
    EXPECT_EQ(scope().getNamespace("b"), inner);
    EXPECT_EQ(scope().getUserType("T"), type);
    EXPECT_EQ(inner->getUserType("T"), innerType);
}

TEST_F(NamespaceClearTest, FunctionMayBeBoundAgain)
{
    Function* const function = scope().setFunction("f");
    run("kept = a.f");
    scope().clear();
    bindAnswer(function, 43);
    is("kept()", "43");
}

TEST_F(NamespaceClearTest, EmptiesFiftyNamespacesInEachOther)
{
    Namespace* innermost = &scope();
    for (int i = 0; i < 50; ++i)
    {
        innermost = innermost->setNamespace("n");
        innermost->setVar("v", i);
    }
    run("all = {} local inner = a for i = 1, 50 do inner = inner.n all[i] = inner end");
    scope().clear();
    run("for i = 1, 50 do assert(next(all[i]) == nil) end");
}

TEST_F(NamespaceClearTest, LeavesUserTypesInsideAsTheyAre)
{
    UserType* const type = scope().setUserType("T");
    makeCounted(type);
    type->setMethod("give", false)->setFunction(returning(42));
    run("T = a.T t = T.new()");
    scope().clear();
    run("assert(t:give() == 42 and T.new():give() == 42)");
}

TEST_F(NamespaceClearTest, LeavesObjectsOfTheHost)
{
    makeCounted(scope().setUserType("T"));
    CountedObject object;
    scope().setVar("t", "a::T", &object);
    scope().clear();
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(NamespaceClearTest, WorksFromInsideAFunctionOfTheNamespace)
{
    int after = 0;
    Function* const function = scope().setFunction("f");
    function->addParameter(PARAM_TYPE_INT);
    function->setFunction(
        [this, &after](const Parameters& parameters)
        {
            scope().clear();
            after = parameters[0].getInt();
            return parameters[0];
        });
    run("assert(a.f(5) == 5 and a.f == nil)");
    EXPECT_EQ(after, 5);
}

TEST_F(NamespaceClearTest, NamesDeclaredBeforeAreStillDeclared)
{
    Function* const function = scope().setFunction("f");
    scope().clear();
    EXPECT_EQ(scope().setFunction("f"), function);
    expectLogged(
        "Setting function 'f' in namespace 'a', but this function is already registered. State "
        "will be changed, but this might hold unexpected results",
        "LuaNamespace");
}

TEST_F(NamespaceClearTest, NamespacesInsideCanStillBeFilled)
{
    Namespace* const inner = scope().setNamespace("b");
    run("b = a.b");
    scope().clear();
    inner->setVar("v", 5);
    is("b.v", "5");
}

namespace
{

const LogEntry UNBOUND{
    "Function 'f' called but no user function is bound. Call having no effect.", "Function"};

// Gives scripts `onEnd(action)`, which returns a value whose finaliser does `action`.
Step onEnd()
{
    return run("function onEnd(action) "
               "    local value = newproxy(true) "
               "    getmetatable(value).__gc = action "
               "    return value "
               "end");
}

const Facts<NamespaceClearTest> FACTS(
    "NamespaceClearTest",
    {
        {"LeavesNoField",
         {variable("a.v", 5),
          unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          run("a.own = {}"),
          clear(),
          run("assert(a.v == nil and a.f == nil and a.b == nil and a.T == nil and a.own == nil)"),
          is("next(a)", "nil"),
          logs({})}},
        {"KeepsTheTableItself", {run("before = a"), clear(), is("a == before", "true")}},
        {"ResetsFunctions",
         {answering("a.f", 42), run("kept = a.f"), clear(), is("kept()", "nil"), logs({UNBOUND})}},
        {"ForgetsTheParametersOfFunctions",
         {[](auto& test) { test.scope().setFunction("f")->addParameter(PARAM_TYPE_INT); },
          run("kept = a.f"),
          clear(),
          run("kept('no number')"),
          logs({UNBOUND})}},
        {"EmptiesNamespacesInside",
         {space("a.b"),
          variable("a.b.v", 5),
          space("a.b.c"),
          variable("a.b.c.v", 5),
          run("b = a.b c = a.b.c"),
          clear(),
          run("assert(next(b) == nil and next(c) == nil)")}},
        {"ResetsFunctionsOfNamespacesInside",
         {space("a.b"),
          answering("a.b.f", 42),
          run("kept = a.b.f"),
          clear(),
          is("kept()", "nil"),
          logs({UNBOUND})}},
        {"EmptiesNamespacesInsideThatAScriptHasTakenOut",
         {space("a.b"),
          variable("a.b.v", 5),
          run("b = a.b a.b = nil"),
          clear(),
          is("next(b)", "nil")}},
        {"LeavesEverythingOutsideAlone",
         {variable("v", 5),
          space("b"),
          variable("b.v", 6),
          space("a.inner"),
          variable("a.v", 7),
          clear("a.inner"),
          run("assert(v == 5 and b.v == 6 and a.v == 7 and a.inner)")}},
        {"DestroysInstancesThatOnlyTheNamespaceHeld",
         {countedType("a.T"), run("a.t = a.T.new()"), living(1), clear(), living(0)}},
        {"CollectsTwice", // each finaliser leaves a value behind: every collection gets one further
         {onEnd(),
          run("ends = 0 "
              "local function endless() ends = ends + 1 onEnd(endless) end "
              "a.first = onEnd(endless)"),
          clear(),
          is("ends", "2"),
          run("function onEnd() end collectgarbage()")}},
        {"LogsARaisingFinaliserAndGoesOn",
         {onEnd(),
          countedType("a.T"),
          run("a.value = onEnd(function() error('lost', 0) end) a.t = a.T.new()"),
          clear(),
          living(0),
          logs("lost", "LuaEnvironment")}},
        {"MayBeRepeated", {variable("a.v", 5), clear(), clear(), is("next(a)", "nil"), logs({})}},
        {"WorksFromInsideAHostFunction",
         {variable("a.v", 5),
          acting(clear()),
          run("local before = a.v act() assert(before == 5 and a.v == nil)")}},
        {"WorksFromInsideACoroutine",
         {variable("a.v", 5), acting(clear()), run("coroutine.wrap(act)() assert(a.v == nil)")}},
        {"ScriptMayGoThroughTheFieldsMeanwhile",
         {variable("a.u", 5),
          variable("a.v", 5),
          variable("a.w", 5),
          acting(clear()),
          run("for name in pairs(a) do act() end assert(next(a) == nil)")}},
        {"VariablesMayBeSetAfterwards", {clear(), variable("a.v", 5), is("a.v", "5")}},
        {"NewNamesMayBeDeclaredAfterwards",
         {clear(), answering("a.f", 42), is("a.f()", "42"), logs({})}},
        // Nothing is published twice in one interpreter, so scripts do not find it again.
        {"NamesDeclaredBeforeStayInvisible",
         {unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          clear(),
          unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          is("next(a)", "nil"),
          logsCount(3)}},
    });

/// A field with an unusual key, or with something odd about the table.
struct FieldRow
{
    const char* row;
    const char* statement; // that makes it
};

} // namespace

using NamespaceClearFieldTest = OnRows<NamespaceFixture, FieldRow>;

ROWS(
    NamespaceClearFieldTest,
    {"TextKey", "a.x = 1"},
    {"EmptyTextKey", "a[''] = 1"},
    {"KeyWithNul", "a['x\\0y'] = 1"},
    {"ArrayPart", "for i = 1, 100 do a[i] = i end"},
    {"SparseNumbers", "for i = 1, 100 do a[i * 1000] = i end"},
    {"OtherNumbers", "a[0] = 1 a[-1] = 1 a[0.5] = 1 a[1 / 0] = 1 a[2 ^ 60] = 1"},
    {"NumbersAndTheirTexts", "for i = 1, 50 do a[i] = i a[tostring(i)] = i end"},
    {"TruthValues", "a[true] = 1 a[false] = 2"},
    {"ItselfAsKey", "a[a] = 1"},
    {"ItselfAsValue", "a.x = a"},
    {"ObjectsAsKeys", "a[{}] = 1 a[print] = 2 a[newproxy()] = 3"},
    {"CoroutineAsKey", "a[coroutine.create(print)] = 1"},
    {"FalseAsValue", "a.x = false"},
    {"Thousands", "for i = 1, 5000 do a['x' .. i] = i end"},
    {"RaisingMetamethods",
     "a.x = 1 setmetatable(a, {__index = function() error('i') end, "
     "__newindex = function() error('n') end})"},
    {"OtherMetamethods", "a.x = 1 setmetatable(a, {__metatable = 1, __call = print})"},
    {"WeakKeys", "kept = {} a[kept] = {} setmetatable(a, {__mode = 'k'})"});

TEST_P(NamespaceClearFieldTest, IsGoneAfterwards)
{
    run(GetParam().statement);
    scope().clear();
    is("next(a)", "nil");
}

TEST_P(NamespaceClearFieldTest, IsGoneAfterTheReleaseToo)
{
    run(GetParam().statement);
    scope().release();
    is("next(a)", "nil");
}

TEST_P(NamespaceClearFieldTest, IsGoneFromNamespacesInside)
{
    scope().setNamespace("inner");
    run("local a = a.inner " + std::string(GetParam().statement));
    run("kept = a.inner");
    scope().clear();
    is("next(kept)", "nil");
}

} // namespace tbScripts::test
