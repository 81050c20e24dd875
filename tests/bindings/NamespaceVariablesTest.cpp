// Variables of a namespace: each kind of value, and what it may overwrite.

#include "support/CountedObject.h"
#include "support/NamespaceFixture.h"
#include "support/RowName.h"

#include <tbScripts/ScriptObjectReference.h>

#include <limits>
#include <type_traits>
#include <utility>

namespace tbScripts::test
{

namespace
{

/// A value that is set as "v", and what a script finds then.
struct VariableRow
{
    const char* row;
    void (*set)(Namespace& scope);
    const char* condition;
};

template <typename Value>
constexpr Value highest = std::numeric_limits<Value>::max();

const std::vector<VariableRow>& allVariables()
{
    static const std::vector<VariableRow> rows{
        {"Text", [](Namespace& scope) { scope.setVar("v", "text"); }, "a.v == 'text'"},
        {"EmptyText", [](Namespace& scope) { scope.setVar("v", ""); }, "a.v == ''"},
        {"NullText",
         [](Namespace& scope) { scope.setVar("v", static_cast<const char*>(nullptr)); },
         "a.v == nil"},
        {"View",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView("text")); },
         "a.v == 'text'"},
        {"ViewOfAPart",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView("text", 2)); },
         "a.v == 'te'"},
        {"ViewUpToItsFirstNul",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView("te\0xt", 5)); },
         "a.v == 'te'"},
        {"ViewThatBeginsWithNul",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView("\0text", 5)); },
         "a.v == ''"},
        {"EmptyView",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView("")); },
         "a.v == ''"},
        {"NullView",
         [](Namespace& scope) { scope.setVar("v", tbMemory::StringView()); },
         "a.v == nil"},
        {"Double", [](Namespace& scope) { scope.setVar("v", 0.1); }, "a.v == 0.1"},
        {"DoubleInfinity",
         [](Namespace& scope) { scope.setVar("v", std::numeric_limits<double>::infinity()); },
         "a.v == 1 / 0"},
        {"DoubleNan",
         [](Namespace& scope) { scope.setVar("v", std::numeric_limits<double>::quiet_NaN()); },
         "type(a.v) == 'number' and a.v ~= a.v"},
        {"FloatWidened",
         [](Namespace& scope) { scope.setVar("v", 0.1F); },
         "a.v == 0.100000001490116119384765625"},
        {"Int", [](Namespace& scope) { scope.setVar("v", 42); }, "a.v == 42"},
        {"HighestInt",
         [](Namespace& scope) { scope.setVar("v", highest<int>); },
         "a.v == 2147483647"},
        {"LowestInt",
         [](Namespace& scope) { scope.setVar("v", std::numeric_limits<int>::min()); },
         "a.v == -2147483648"},
        {"True", [](Namespace& scope) { scope.setVar("v", true); }, "a.v == true"},
        {"False", [](Namespace& scope) { scope.setVar("v", false); }, "a.v == false"},
        {"EmptyReference",
         [](Namespace& scope) { scope.setVar("v", ScriptObjectReference()); },
         "a.v == nil"},
        {"NullObject", [](Namespace& scope) { scope.setVar("v", "a::T", nullptr); }, "a.v == nil"},
        {"Object",
         [](Namespace& scope) { scope.setVar("v", "a::T", &scope); },
         "type(a.v) == 'userdata'"}};
    return rows;
}

template <typename Value, typename = void>
struct CanBeSet : std::false_type
{
};

template <typename Value>
struct CanBeSet<
    Value,
    std::void_t<decltype(std::declval<Namespace&>().setVar("v", std::declval<Value>()))>>
    : std::true_type
{
};

// A pointer would be taken for a boolean.
static_assert(CanBeSet<const char*>::value && CanBeSet<bool>::value);
static_assert(!CanBeSet<int*>::value && !CanBeSet<const void*>::value);

} // namespace

class NamespaceAnyVariableTest : public OnRows<NamespaceFixture, VariableRow>
{
protected:
    const std::string m_check = std::string("assert(") + GetParam().condition + ")";
};

ROWS(NamespaceAnyVariableTest, allVariables());

TEST_P(NamespaceAnyVariableTest, IsSeenByScripts)
{
    run("a.v = {}"); // not nil, so that storing nil shows
    GetParam().set(scope());
    run(m_check);
}

TEST_P(NamespaceAnyVariableTest, IsSeenInAnInnerNamespace)
{
    Namespace* const inner = scope().setNamespace("inner");
    run("a.v = 'untouched' outer = a");
    GetParam().set(*inner);
    run("a = outer.inner " + m_check + " assert(outer.v == 'untouched')");
}

TEST_P(NamespaceAnyVariableTest, OverwritesDeclarationsInSilence)
{
    Namespace* const inner = scope().setNamespace("v");
    UserType* const type = scope().setUserType("v");
    GetParam().set(scope());
    run(m_check);
    EXPECT_EQ(scope().getNamespace("v"), inner);
    EXPECT_EQ(scope().getUserType("v"), type);

    scope().setFunction("v");
    GetParam().set(scope());
    run(m_check);
}

TEST_P(NamespaceAnyVariableTest, IsLoggedIfItsFieldIsRefused)
{
    run("setmetatable(a, {__newindex = function() error('closed', 0) end})");
    GetParam().set(scope());
    is("rawget(a, 'v')", "nil");
    expectLogged("closed", "LuaEnvironment");
}

TEST_P(NamespaceAnyVariableTest, CanBeSetFromInsideAHostFunctionAndACoroutine)
{
    declareAction("act", [this] { GetParam().set(scope()); });
    run("a.v = {} act() " + m_check);
    run("a.v = {} coroutine.wrap(act)() collectgarbage() " + m_check);
}

class NamespaceVariablesTest : public NamespaceFixture
{
protected:
    // Expects `a.v`, which a script set before, to be nil once `value` is stored there.
    void expectStoredAsNil(const ScriptObjectReference& value)
    {
        run("a.v = 5");
        scope().setVar("v", value);
        is("a.v", "nil");
    }

    int m_object = 42;
};

TEST_F(NamespaceVariablesTest, ReferenceStoresTheVeryValue)
{
    run("list = {1, 2}");
    scope().setVar("v", environment().getVar("list"));
    is("a.v == list", "true");
}

TEST_F(NamespaceVariablesTest, ReferenceStoresAScriptFunction)
{
    run("function give() return 42 end");
    scope().setVar("v", environment().getScriptFunction("give"));
    is("a.v()", "42");
}

TEST_F(NamespaceVariablesTest, StoredValueOutlivesItsReference)
{
    run("list = {42}");
    scope().setVar("v", environment().getVar("list"));
    run("list = nil collectgarbage() assert(a.v[1] == 42)");
}

TEST_F(NamespaceVariablesTest, ReferenceOfAnEarlierInterpreterStoresNil)
{
    run("list = {}");
    const ScriptObjectReference list = environment().getVar("list");
    restart();
    environment().setNamespace("a");
    forgetLog();
    expectStoredAsNil(list);
}

TEST_F(NamespaceVariablesTest, ReferenceOfAnotherEnvironmentStoresNil)
{
    ScriptObjectReference text;
    {
        Environment other;
        other.setEnvironmentFor(INTERPRETER_LUA);
        other.setVar("text", "foreign");
        text = other.getVar("text");
        expectStoredAsNil(text);
    }
    expectStoredAsNil(text); // and none that was destroyed
}

TEST_F(NamespaceVariablesTest, ObjectIsAnInstanceOfItsType)
{
    scope()
        .setUserType("T")
        ->setMethod("give", false)
        ->setFunction([](const Parameters& parameters)
                      { return *static_cast<int*>(parameters[0].getUserTypeObject()); });
    scope().setVar("v", "a::T", &m_object);
    run("assert(a.v:give() == 42 and getmetatable(a.v) == a.T)");
}

TEST_F(NamespaceVariablesTest, ObjectStaysTheHosts)
{
    makeCounted(scope().setUserType("T"));
    CountedObject object;
    scope().setVar("v", "a::T", &object);
    run("a.v = nil collectgarbage()");
    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(NamespaceVariablesTest, ScriptMayTakeAnObjectOver)
{
    makeCounted(scope().setUserType("T"));
    scope().setVar("v", "a::T", new CountedObject);
    run("a.v:enableGc() a.v = nil collectgarbage()");
    EXPECT_EQ(CountedObject::getLiving(), 0);
}

TEST_F(NamespaceVariablesTest, NullObjectRemovesAField)
{
    scope().setUserType("T");
    scope().setVar("v", "a::T", &m_object);
    scope().setVar("v", "a::T", nullptr);
    run("assert(next(a) == 'T' and next(a, 'T') == nil)");
}

TEST_F(NamespaceVariablesTest, ReplacedFunctionStaysDeclared)
{
    Function* const function = scope().setFunction("f");
    scope().setVar("f", 5);
    EXPECT_EQ(scope().setFunction("f"), function);
    is("a.f", "5");
    expectLogCount(1);
}

TEST_F(NamespaceVariablesTest, ReplacedNamespaceCanStillBeFilled)
{
    Namespace* const inner = scope().setNamespace("b");
    run("kept = a.b");
    scope().setVar("b", 5);
    inner->setVar("v", 42);
    run("assert(a.b == 5 and kept.v == 42)");
}

// Names that are not those of a user type.
TEST_F(NamespaceVariablesTest, ObjectOfNoTypeHasNoMetatable)
{
    scope().setUserType("T");
    for (const char* const typeName :
         {static_cast<const char*>(nullptr), "", "Unknown", "T", "a", "_LOADED", "FILE*"})
    {
        SCOPED_TRACE(typeName ? typeName : "null");
        scope().setVar("v", tbMemory::StringView(typeName), &m_object);
        run("assert(type(a.v) == 'userdata' and debug.getmetatable(a.v) == nil) a.v = nil");
        expectLogged({});
    }
}

} // namespace tbScripts::test
