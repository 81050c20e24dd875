// Releasing a namespace: what was declared in it is destroyed, and what scripts kept of it is of no
// use any more.

#include "support/CountedObject.h"
#include "support/Farewell.h"
#include "support/NamespaceFixture.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NamespaceReleaseTest : public NamespaceFixture
{
protected:
    // Returns something to capture that notes `name` when it goes.
    std::shared_ptr<const void> noteEnd(const std::string& name)
    {
        return makeFarewell([this, name] { m_ends.push_back(name); });
    }

    // Declares in `owner` a function, and a user type with a method, that note their ends; and an
    // instance, which scripts reach as field "t" of `path`.
    void fill(Namespace& owner, const std::string& path)
    {
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

TEST_F(NamespaceReleaseTest, DestroysWhatWasDeclared)
{
    scope().setNamespace("b");
    scope().setUserType("T");

    scope().release();

    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_EQ(scope().getUserType("T"), nullptr);
}

TEST_F(NamespaceReleaseTest, LeavesNoField)
{
    scope().setVar("v", 5);
    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");

    scope().release();

    run("assert(next(a) == nil)");
}

TEST_F(NamespaceReleaseTest, IsSilent)
{
    scope().setFunction("f");
    Namespace* const inner = scope().setNamespace("b");
    inner->setFunction("f");
    inner->setUserType("T")->setMethod("m", false);
    scope().setUserType("T")->setMethod("m", false);

    scope().release();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceReleaseTest, KeepsTheTableItself)
{
    run("before = a");

    scope().release();

    run("assert(a == before)");
    EXPECT_EQ(environment().getNamespace("a"), &scope());
}

TEST_F(NamespaceReleaseTest, EmptyNamespaceStaysAsItIs)
{
    scope().release();

    run("assert(type(a) == 'table' and next(a) == nil)");
}

TEST_F(NamespaceReleaseTest, MayBeRepeated)
{
    scope().setFunction("f");
    scope().release();

    scope().release();

    run("assert(next(a) == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceReleaseTest, TakesVariablesEvenIfNothingWasDeclared)
{
    run("a.own = 5");

    scope().release();

    run("assert(a.own == nil)");
}

TEST_F(NamespaceReleaseTest, OfAnInnerNamespaceKeepsItDeclared)
{
    Namespace* const inner = scope().setNamespace("b");
    inner->setVar("v", 5);

    inner->release();

    EXPECT_EQ(scope().getNamespace("b"), inner);
    run("assert(next(a.b) == nil)");
}

TEST_F(NamespaceReleaseTest, LeavesEverythingOutsideAlone)
{
    bindAnswer(environment().setFunc("f"), 1);
    bindAnswer(scope().setFunction("f"), 2);
    Namespace* const inner = scope().setNamespace("inner");
    inner->setFunction("f");

    inner->release();

    run("assert(f() == 1 and a.f() == 2)");
}

TEST_F(NamespaceReleaseTest, EverythingMayBeDeclaredAgainInSilence)
{
    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");
    scope().release();

    bindAnswer(scope().setFunction("f"), 42);
    Namespace* const inner = scope().setNamespace("b");
    makeCounted(scope().setUserType("T"));

    inner->setVar("v", 5);
    run("assert(a.f() == 42 and a.b.v == 5 and a.T.new())");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

// Scripts kept something.

TEST_F(NamespaceReleaseTest, KeptFunctionIsAScriptError)
{
    bindAnswer(scope().setFunction("f"), 42);
    run("kept = a.f");

    scope().release();

    EXPECT_EQ(
        runExpectingError("kept()"),
        "Error while executing script 'test' : Function 'f' does not exist anymore.");
}

TEST_F(NamespaceReleaseTest, KeptFunctionOfAnInnerNamespaceIsAScriptError)
{
    bindAnswer(scope().setNamespace("b")->setFunction("f"), 42);
    run("kept = a.b.f");

    scope().release();

    EXPECT_EQ(
        runExpectingError("kept()"),
        "Error while executing script 'test' : Function 'f' does not exist anymore.");
}

TEST_F(NamespaceReleaseTest, KeptFunctionStaysDeadWhenItsNameIsDeclaredAgain)
{
    scope().setFunction("f");
    run("kept = a.f");
    scope().release();

    bindAnswer(scope().setFunction("f"), 42);

    EXPECT_EQ(
        runExpectingError("assert(a.f() == 42) kept()"),
        "Error while executing script 'test' : Function 'f' does not exist anymore.");
}

TEST_F(NamespaceReleaseTest, KeptTableOfAnInnerNamespaceIsAnEmptyTable)
{
    scope().setNamespace("b")->setVar("v", 5);
    run("kept = a.b");

    scope().release();

    run("assert(next(kept) == nil) kept.v = 6 assert(kept.v == 6)");
}

TEST_F(NamespaceReleaseTest, InnerNamespaceDeclaredAgainHasATableOfItsOwn)
{
    scope().setNamespace("b");
    run("kept = a.b");
    scope().release();

    scope().setNamespace("b")->setVar("v", 5);

    run("assert(kept ~= a.b and kept.v == nil and a.b.v == 5)");
}

TEST_F(NamespaceReleaseTest, KeptUserTypeMakesNoInstances)
{
    makeCounted(scope().setUserType("T"));
    run("kept = a.T");

    scope().release();

    EXPECT_EQ(
        runExpectingError("kept.new()"),
        "Error while executing script 'test' : User type 'a::T' does not exist anymore.");
    EXPECT_EQ(CountedObject::getMade(), 0);
}

TEST_F(NamespaceReleaseTest, KeptMethodIsAScriptError)
{
    scope().setUserType("T")->setStaticMethod("make");
    run("kept = a.T.make");

    scope().release();

    EXPECT_EQ(
        runExpectingError("kept()"),
        "Error while executing script 'test' : Function 'make' does not exist anymore.");
}

// Instances.

TEST_F(NamespaceReleaseTest, DestroysInstancesThatOnlyTheNamespaceHeld)
{
    makeCounted(scope().setUserType("T"));
    makeCounted(scope().setNamespace("b")->setUserType("T"));
    run("a.t = a.T.new() a.b.t = a.b.T.new()");
    ASSERT_EQ(CountedObject::getLiving(), 2);

    scope().release();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(NamespaceReleaseTest, KeptInstancesAreDestroyedOnceTheyAreLetGo)
{
    makeCounted(scope().setUserType("T"));
    makeCounted(scope().setNamespace("b")->setUserType("T"));
    run("first = a.T.new() second = a.b.T.new()");
    scope().release();
    ASSERT_EQ(CountedObject::getLiving(), 2);

    run("first = nil second = nil collectgarbage() collectgarbage()");

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(NamespaceReleaseTest, KeptInstancesAreDestroyedWithTheInterpreterAtTheLatest)
{
    makeCounted(scope().setNamespace("b")->setUserType("T"));
    run("package.loaded.kept = a.b.T.new()");
    scope().release();
    ASSERT_EQ(CountedObject::getLiving(), 1);

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(CountedObject::getLiving(), 0);
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

// The order.

TEST_F(NamespaceReleaseTest, GoesFromFunctionsOverInnerNamespacesToUserTypes)
{
    fill(*scope().setNamespace("b"), "a.b");
    fill(scope(), "a");

    scope().release();

    EXPECT_THAT(
        m_ends,
        ElementsAre(
            "function in a",
            "function in a.b",
            "method in a.b",
            "instance in a.b",
            "method in a",
            "instance in a"));
}

TEST_F(NamespaceReleaseTest, EverythingGoesOnce)
{
    fill(*scope().setNamespace("b"), "a.b");
    fill(scope(), "a");

    scope().release();
    destroyEnvironment();

    EXPECT_EQ(m_ends.size(), 6U);
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

// Scripts are refused from here on, but what they were promised before is kept.
TEST_F(NamespaceReleaseTest, FinalisersDoNotFindTheFunctionsAnyMore)
{
    scope().setFunction("f");
    run("local f = a.f a.value = newproxy(true) "
        "getmetatable(a.value).__gc = function() f() end");

    scope().release();

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{"Function 'f' does not exist anymore.", "LuaEnvironment"}));
}

TEST_F(NamespaceReleaseTest, LogsARaisingFinaliserAndGoesOn)
{
    makeCounted(scope().setNamespace("b")->setUserType("T"));
    run("a.b.t = a.b.T.new() a.value = newproxy(true) "
        "getmetatable(a.value).__gc = function() error('lost', 0) end");

    scope().release();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"lost", "LuaEnvironment"}));
}

// Each inner namespace takes its name out of a table that is empty already.
TEST_F(NamespaceReleaseTest, LogsARaisingMetamethodAndGoesOn)
{
    scope().setNamespace("b");
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");

    scope().release();

    EXPECT_EQ(scope().getNamespace("b"), nullptr);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"closed", "LuaEnvironment"}));
}

TEST_F(NamespaceReleaseTest, WorksFromInsideAHostFunction)
{
    scope().setFunction("f");
    declareAction("act", [this] { scope().release(); });

    run("local before = a.f act() assert(before and a.f == nil)");
}

TEST_F(NamespaceReleaseTest, WorksFromInsideACoroutine)
{
    scope().setFunction("f");
    declareAction("act", [this] { scope().release(); });

    run("coroutine.wrap(act)() collectgarbage() assert(a.f == nil)");
}

} // namespace tbScripts::test
