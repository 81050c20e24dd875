// Clearing a namespace: what scripts see of it goes, what the host declared stays.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectReference.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NamespaceClearTest : public NamespaceFixture
{
protected:
    static LogEntry unbound(const std::string& name)
    {
        return {
            "Function '" + name + "' called but no user function is bound. Call having no effect.",
            "Function"};
    }

    // Gives scripts `onEnd(action)`, which returns a value whose finaliser does `action`.
    void declareOnEnd()
    {
        run("function onEnd(action) "
            "    local value = newproxy(true) "
            "    getmetatable(value).__gc = action "
            "    return value "
            "end");
    }
};

TEST_F(NamespaceClearTest, LeavesNoField)
{
    scope().setVar("v", 5);
    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");
    run("a.own = {}");

    scope().clear();

    run("assert(a.v == nil and a.f == nil and a.b == nil and a.T == nil and a.own == nil)"
        " assert(next(a) == nil)");
}

TEST_F(NamespaceClearTest, KeepsTheTableItself)
{
    run("before = a");

    scope().clear();

    run("assert(a == before)");
}

TEST_F(NamespaceClearTest, IsSilent)
{
    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");

    scope().clear();

    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

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

TEST_F(NamespaceClearTest, ResetsFunctions)
{
    bindAnswer(scope().setFunction("f"), 42);
    run("kept = a.f");

    scope().clear();

    run("assert(kept() == nil)");
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(unbound("f")));
}

TEST_F(NamespaceClearTest, ForgetsTheParametersOfFunctions)
{
    scope().setFunction("f")->addParameter(PARAM_TYPE_INT);
    run("kept = a.f");

    scope().clear();

    run("kept('no number')");
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(unbound("f")));
}

TEST_F(NamespaceClearTest, FunctionMayBeBoundAgain)
{
    Function* const function = scope().setFunction("f");
    run("kept = a.f");

    scope().clear();

    bindAnswer(function, 43);
    run("assert(kept() == 43)");
}

TEST_F(NamespaceClearTest, EmptiesNamespacesInside)
{
    Namespace* const inner = scope().setNamespace("b");
    inner->setVar("v", 5);
    inner->setNamespace("c")->setVar("v", 5);
    run("b = a.b c = a.b.c");

    scope().clear();

    run("assert(next(b) == nil and next(c) == nil)");
}

TEST_F(NamespaceClearTest, ResetsFunctionsOfNamespacesInside)
{
    bindAnswer(scope().setNamespace("b")->setFunction("f"), 42);
    run("kept = a.b.f");

    scope().clear();

    run("assert(kept() == nil)");
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(unbound("f")));
}

TEST_F(NamespaceClearTest, EmptiesNamespacesInsideThatAScriptHasTakenOut)
{
    scope().setNamespace("b")->setVar("v", 5);
    run("b = a.b a.b = nil");

    scope().clear();

    run("assert(next(b) == nil)");
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

TEST_F(NamespaceClearTest, LeavesEverythingOutsideAlone)
{
    environment().setVar("v", 5);
    Namespace* const sibling = environment().setNamespace("b");
    sibling->setVar("v", 6);
    Namespace* const inner = scope().setNamespace("inner");
    scope().setVar("v", 7);

    inner->clear();

    run("assert(v == 5 and b.v == 6 and a.v == 7 and a.inner)");
}

TEST_F(NamespaceClearTest, LeavesUserTypesInsideAsTheyAre)
{
    UserType* const type = scope().setUserType("T");
    makeCounted(type);
    type->setMethod("give", false)
        ->setFunction([](const Parameters&) { return FunctionParameter(42); });
    run("T = a.T t = T.new()");

    scope().clear();

    run("assert(t:give() == 42 and T.new():give() == 42)");
}

TEST_F(NamespaceClearTest, DestroysInstancesThatOnlyTheNamespaceHeld)
{
    makeCounted(scope().setUserType("T"));
    run("a.t = a.T.new()");
    ASSERT_EQ(CountedObject::getLiving(), 1);

    scope().clear();

    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(NamespaceClearTest, LeavesObjectsOfTheHost)
{
    makeCounted(scope().setUserType("T"));
    CountedObject object;
    scope().setVar("t", "a::T", &object);

    scope().clear();

    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(NamespaceClearTest, CollectsTwice)
{
    declareOnEnd();
    // Each finaliser leaves the next value behind: every collection gets one further.
    run("ends = 0 "
        "local function endless() ends = ends + 1 onEnd(endless) end "
        "a.first = onEnd(endless)");

    scope().clear();

    EXPECT_EQ(environment().getVar("ends", -1), 2);
    run("function onEnd() end collectgarbage()");
}

TEST_F(NamespaceClearTest, LogsARaisingFinaliserAndGoesOn)
{
    declareOnEnd();
    makeCounted(scope().setUserType("T"));
    run("a.value = onEnd(function() error('lost', 0) end) a.t = a.T.new()");

    scope().clear();

    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"lost", "LuaEnvironment"}));
}

TEST_F(NamespaceClearTest, MayBeRepeated)
{
    scope().setVar("v", 5);
    scope().clear();

    scope().clear();

    run("assert(next(a) == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceClearTest, WorksFromInsideAHostFunction)
{
    scope().setVar("v", 5);
    declareAction("act", [this] { scope().clear(); });

    run("local before = a.v act() assert(before == 5 and a.v == nil)");
}

TEST_F(NamespaceClearTest, WorksFromInsideACoroutine)
{
    scope().setVar("v", 5);
    declareAction("act", [this] { scope().clear(); });

    run("coroutine.wrap(act)() assert(a.v == nil)");
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

TEST_F(NamespaceClearTest, ScriptMayGoThroughTheFieldsMeanwhile)
{
    for (const char* const name : {"u", "v", "w"})
        scope().setVar(name, 5);
    declareAction("act", [this] { scope().clear(); });

    run("for name in pairs(a) do act() end assert(next(a) == nil)");
}

// What comes after.

TEST_F(NamespaceClearTest, VariablesMayBeSetAfterwards)
{
    scope().clear();

    scope().setVar("v", 5);

    run("assert(a.v == 5)");
}

TEST_F(NamespaceClearTest, NewNamesMayBeDeclaredAfterwards)
{
    scope().clear();

    bindAnswer(scope().setFunction("f"), 42);

    run("assert(a.f() == 42)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(NamespaceClearTest, NamesDeclaredBeforeAreStillDeclared)
{
    Function* const function = scope().setFunction("f");
    scope().clear();

    EXPECT_EQ(scope().setFunction("f"), function);

    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Setting function 'f' in namespace 'a', but this function is already registered. State "
            "will be changed, but this might hold unexpected results",
            "LuaNamespace"}));
}

// Nothing is published twice in one interpreter, so scripts do not find it again.
TEST_F(NamespaceClearTest, NamesDeclaredBeforeStayInvisible)
{
    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");
    scope().clear();

    scope().setFunction("f");
    scope().setNamespace("b");
    scope().setUserType("T");

    run("assert(next(a) == nil)");
    EXPECT_EQ(m_log.takeEntries().size(), 3U);
}

TEST_F(NamespaceClearTest, NamespacesInsideCanStillBeFilled)
{
    Namespace* const inner = scope().setNamespace("b");
    run("b = a.b");
    scope().clear();

    inner->setVar("v", 5);

    run("assert(b.v == 5)");
}

namespace
{

/// A field with an unusual key, or with something odd about the table.
struct FieldRow
{
    const char* row;
    const char* statement; // that makes it
};

std::ostream& operator<<(std::ostream& stream, const FieldRow& row)
{
    return stream << row.row;
}

} // namespace

class NamespaceClearFieldTest : public NamespaceFixture,
                                public ::testing::WithParamInterface<FieldRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Fields,
    NamespaceClearFieldTest,
    ::testing::Values(
        FieldRow{"TextKey", "a.x = 1"},
        FieldRow{"EmptyTextKey", "a[''] = 1"},
        FieldRow{"KeyWithNul", "a['x\\0y'] = 1"},
        FieldRow{"ArrayPart", "for i = 1, 100 do a[i] = i end"},
        FieldRow{"SparseNumbers", "for i = 1, 100 do a[i * 1000] = i end"},
        FieldRow{"OtherNumbers", "a[0] = 1 a[-1] = 1 a[0.5] = 1 a[1 / 0] = 1 a[2 ^ 60] = 1"},
        FieldRow{"NumbersAndTheirTexts", "for i = 1, 50 do a[i] = i a[tostring(i)] = i end"},
        FieldRow{"TruthValues", "a[true] = 1 a[false] = 2"},
        FieldRow{"ItselfAsKey", "a[a] = 1"},
        FieldRow{"ItselfAsValue", "a.x = a"},
        FieldRow{"ObjectsAsKeys", "a[{}] = 1 a[print] = 2 a[newproxy()] = 3"},
        FieldRow{"CoroutineAsKey", "a[coroutine.create(print)] = 1"},
        FieldRow{"FalseAsValue", "a.x = false"},
        FieldRow{"Thousands", "for i = 1, 5000 do a['x' .. i] = i end"},
        FieldRow{
            "RaisingMetamethods",
            "a.x = 1 setmetatable(a, {__index = function() error('i') end, "
            "__newindex = function() error('n') end})"},
        FieldRow{"OtherMetamethods", "a.x = 1 setmetatable(a, {__metatable = 1, __call = print})"},
        FieldRow{"WeakKeys", "kept = {} a[kept] = {} setmetatable(a, {__mode = 'k'})"}),
    RowName());

TEST_P(NamespaceClearFieldTest, IsGoneAfterwards)
{
    run(GetParam().statement);

    scope().clear();

    run("assert(next(a) == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_P(NamespaceClearFieldTest, IsGoneAfterTheReleaseToo)
{
    run(GetParam().statement);

    scope().release();

    run("assert(next(a) == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_P(NamespaceClearFieldTest, IsGoneFromNamespacesInside)
{
    scope().setNamespace("inner");
    run("local a = a.inner " + std::string(GetParam().statement));
    run("kept = a.inner");

    scope().clear();

    run("assert(next(kept) == nil)");
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

} // namespace tbScripts::test
