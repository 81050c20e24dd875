// Releasing a namespace: what was declared in it is destroyed, and what scripts kept of it is of no
// use any more.

#include "support/CountedObject.h"
#include "support/Farewell.h"
#include "support/NamespaceSteps.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

class NamespaceReleaseTest : public NamespaceFixture
{
public:
    // Returns something to capture that notes `name` when it is destroyed.
    std::shared_ptr<const void> noteEnd(const std::string& name)
    {
        return makeFarewell([this, name] { m_ends.push_back(name); });
    }

    // Declares at `path` a function, and a user type with a method, that note their ends; and an
    // instance, which scripts reach as field "t".
    void fill(const std::string& path)
    {
        Namespace& owner = namespaceAt(*this, path);
        bindHolding(owner.setFunction("f"), noteEnd("function in " + path));
        UserType* const type = owner.setUserType("T");
        type->setConstructor([](const Parameters&) { return new CountedObject; });
        type->setDestructor(
            [this, path](void* object)
            {
                delete static_cast<CountedObject*>(object);
                m_ends.push_back("instance in " + path);
            });
        bindHolding(type->setMethod("m", false), noteEnd("method in " + path));
        run(path + ".t = " + path + ".T.new()");
    }

    std::vector<std::string> m_ends;
};

TEST_F(NamespaceReleaseTest, KeepsTheTableItself)
{
    run("before = a");
    scope().release();
    is("a == before", "true");
    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

TEST_F(NamespaceReleaseTest, OfAnInnerNamespaceKeepsItDeclared)
{
    Namespace* const inner = scope().setNamespace("b");
    inner->setVar("v", 5);
    inner->release();
    EXPECT_EQ(scope().getNamespace("b"), inner);
    is("next(a.b)", "nil");
}

TEST_F(NamespaceReleaseTest, DestroysFiftyNamespacesInEachOther)
{
    Namespace* innermost = &scope();
    for (int i = 0; i < 50; ++i)
    {
        innermost = innermost->setNamespace("n");
        makeCounted(innermost->setUserType("T"));
    }
    run("local inner = a for i = 1, 50 do inner = inner.n inner.t = inner.T.new() end");
    ASSERT_EQ(CountedObject::getLiving(), 50);

    scope().release();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(scope().getNamespace("n"), nullptr);
}

TEST_F(NamespaceReleaseTest, GoesOnceFromFunctionsOverInnerNamespacesToUserTypes)
{
    scope().setNamespace("b");
    fill("a.b");
    fill("a");

    scope().release();

    const std::vector<std::string> expected{
        "function in a",
        "function in a.b",
        "method in a.b",
        "instance in a.b",
        "method in a",
        "instance in a"};
    EXPECT_EQ(m_ends, expected);
    destroyEnvironment();
    EXPECT_EQ(m_ends, expected);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(NamespaceReleaseTest, WorksFromInsideAHostFunction)
{
    scope().setFunction("f");
    declareAction("act", [this] { scope().release(); });
    run("local before = a.f act() assert(before and a.f == nil)");
}

namespace
{

const char* const NO_FUNCTION = "Function 'f' does not exist anymore.";

const Facts<NamespaceReleaseTest> FACTS(
    "NamespaceReleaseTest",
    {
        {"DestroysWhatWasDeclared",
         {space("a.b"), userType("a.T"), release(), knows("b", false), knows("T", false)}},
        {"LeavesNoField",
         {variable("a.v", 5),
          unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          release(),
          is("next(a)", "nil")}},
        {"IsSilent",
         {[](auto& test) { test.scope().setUserType("T")->setMethod("m", false); },
          unboundFunction("a.f"),
          space("a.b"),
          unboundFunction("a.b.f"),
          [](auto& test) { namespaceAt(test, "a.b").setUserType("T")->setMethod("m", false); },
          release(),
          logs({})}},
        {"EmptyNamespaceStaysAsItIs", {release(), is("type(a)", "table"), is("next(a)", "nil")}},
        {"MayBeRepeated",
         {unboundFunction("a.f"), release(), release(), is("next(a)", "nil"), logs({})}},
        {"TakesVariablesEvenIfNothingWasDeclared",
         {run("a.own = 5"), release(), is("a.own", "nil")}},
        {"LeavesEverythingOutsideAlone",
         {answering("f", 1),
          answering("a.f", 2),
          space("a.inner"),
          unboundFunction("a.inner.f"),
          release("a.inner"),
          run("assert(f() == 1 and a.f() == 2)")}},
        {"EverythingMayBeDeclaredAgainInSilence",
         {unboundFunction("a.f"),
          space("a.b"),
          userType("a.T"),
          release(),
          answering("a.f", 42),
          space("a.b"),
          countedType("a.T"),
          variable("a.b.v", 5),
          run("assert(a.f() == 42 and a.b.v == 5 and a.T.new())"),
          logs({})}},
        // Scripts kept something.
        {"KeptFunctionIsAScriptError",
         {answering("a.f", 42), run("kept = a.f"), release(), stops("kept()", NO_FUNCTION)}},
        {"KeptFunctionOfAnInnerNamespaceIsAScriptError",
         {space("a.b"),
          answering("a.b.f", 42),
          run("kept = a.b.f"),
          release(),
          stops("kept()", NO_FUNCTION)}},
        {"KeptFunctionStaysDeadWhenItsNameIsDeclaredAgain",
         {unboundFunction("a.f"),
          run("kept = a.f"),
          release(),
          answering("a.f", 42),
          stops("assert(a.f() == 42) kept()", NO_FUNCTION)}},
        {"KeptTableOfAnInnerNamespaceIsAnEmptyTable",
         {space("a.b"),
          variable("a.b.v", 5),
          run("kept = a.b"),
          release(),
          run("assert(next(kept) == nil) kept.v = 6 assert(kept.v == 6)")}},
        {"InnerNamespaceDeclaredAgainHasATableOfItsOwn",
         {space("a.b"),
          run("kept = a.b"),
          release(),
          space("a.b"),
          variable("a.b.v", 5),
          run("assert(kept ~= a.b and kept.v == nil and a.b.v == 5)")}},
        {"KeptUserTypeMakesNoInstances",
         {countedType("a.T"),
          run("kept = a.T"),
          release(),
          stops("kept.new()", "User type 'a::T' does not exist anymore."),
          [](auto&) { EXPECT_EQ(CountedObject::getMade(), 0); }}},
        {"KeptMethodIsAScriptError",
         {[](auto& test) { test.scope().setUserType("T")->setStaticMethod("make"); },
          run("kept = a.T.make"),
          release(),
          stops("kept()", "Function 'make' does not exist anymore.")}},
        // Instances.
        {"DestroysInstancesThatOnlyTheNamespaceHeld",
         {countedType("a.T"),
          space("a.b"),
          countedType("a.b.T"),
          run("a.t = a.T.new() a.b.t = a.b.T.new()"),
          living(2),
          release(),
          living(0)}},
        {"KeptInstancesAreDestroyedOnceTheyAreLetGo",
         {countedType("a.T"),
          space("a.b"),
          countedType("a.b.T"),
          run("first = a.T.new() second = a.b.T.new()"),
          release(),
          living(2),
          run("first = nil second = nil collectgarbage() collectgarbage()"),
          living(0)}},
        {"KeptInstancesAreDestroyedWithTheInterpreterAtTheLatest",
         {space("a.b"),
          countedType("a.b.T"),
          run("package.loaded.kept = a.b.T.new()"),
          release(),
          living(1),
          restart(),
          living(0)}},
        // Scripts are refused from here on, but what they were promised before is kept.
        {"FinalisersDoNotFindTheFunctionsAnyMore",
         {unboundFunction("a.f"),
          run("local f = a.f a.value = newproxy(true) "
              "getmetatable(a.value).__gc = function() f() end"),
          release(),
          logs(NO_FUNCTION, "LuaEnvironment")}},
        {"LogsARaisingFinaliserAndGoesOn",
         {space("a.b"),
          countedType("a.b.T"),
          run("a.b.t = a.b.T.new() a.value = newproxy(true) "
              "getmetatable(a.value).__gc = function() error('lost', 0) end"),
          release(),
          living(0),
          knows("b", false),
          logs("lost", "LuaEnvironment")}},
        // Each inner namespace takes its name out of a table that is empty already.
        {"LogsARaisingMetamethodAndGoesOn",
         {space("a.b"),
          run("setmetatable(a, {__newindex = function() error('closed', 0) end})"),
          release(),
          knows("b", false),
          logs("closed", "LuaEnvironment")}},
        {"WorksFromInsideACoroutine",
         {unboundFunction("a.f"),
          acting(release()),
          run("coroutine.wrap(act)() collectgarbage() assert(a.f == nil)")}},
    });

} // namespace

} // namespace tbScripts::test
