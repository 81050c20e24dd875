// Declarations whose publishing has the host declare the same name: a metamethod of the globals, or
// of the table that the name belongs to, calls a host function that does it.

#include "support/NamespaceFixture.h"
#include "support/RowName.h"

#include <string>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Kind
{
    const char* row;
    const char* owner;     // what scripts call the table that gets the name
    const char* published; // what scripts call the thing
    const void* (*declare)(Environment& environment);
    const void* (*find)(Environment& environment); // null where there is no lookup
};

using Thing = const void*;

const std::vector<Kind>& allKinds()
{
    static const std::vector<Kind> kinds{
        {"Function",
         "_G",
         "x",
         [](Environment& e) -> Thing { return e.setFunc("x"); },
         [](Environment& e) -> Thing { return e.getFunc("x"); }},
        {"UserType",
         "_G",
         "x",
         [](Environment& e) -> Thing { return e.setUserType("x"); },
         [](Environment& e) -> Thing { return e.getUserType("x"); }},
        {"Namespace",
         "_G",
         "x",
         [](Environment& e) -> Thing { return e.setNamespace("x"); },
         [](Environment& e) -> Thing { return e.getNamespace("x"); }},
        {"FunctionInANamespace",
         "a",
         "a.x",
         [](Environment& e) -> Thing { return e.getNamespace("a")->setFunction("x"); },
         nullptr},
        {"UserTypeInANamespace",
         "a",
         "a.x",
         [](Environment& e) -> Thing { return e.setUserType("a::x"); },
         [](Environment& e) -> Thing { return e.getUserType("a::x"); }},
        {"NamespaceInANamespace",
         "a",
         "a.x",
         [](Environment& e) -> Thing { return e.setNamespace("a::x"); },
         [](Environment& e) -> Thing { return e.getNamespace("a::x"); }},
        {"Method",
         "T",
         "T.x",
         [](Environment& e) -> Thing { return e.getUserType("T")->setMethod("x", false); },
         [](Environment& e) -> Thing { return e.getUserType("T")->getMethod("x"); }}};
    return kinds;
}

} // namespace

class RivalDeclarationTest : public OnRows<NamespaceFixture, Kind>
{
protected:
    RivalDeclarationTest()
    {
        environment().setUserType("T");
        declareAction("declareAgain", [this] { m_inner = GetParam().declare(environment()); });
    }

    /// Has `body` run, once, when the name is published; it sees table, key and value as t, k, v.
    void whenPublished(const std::string& body)
    {
        run("local rawset, error, again, isDone = rawset, error, declareAgain, false "
            "setmetatable(" +
            std::string(GetParam().owner) +
            ", {__newindex = function(t, k, v) "
            "    if isDone then rawset(t, k, v) return end "
            "    isDone = true " +
            body + " end})");
    }

    /// Declares the name; both declarations have to give the same object.
    void expectOneObject()
    {
        const void* const outer = GetParam().declare(environment());

        EXPECT_NE(outer, nullptr);
        EXPECT_EQ(outer, m_inner);
        EXPECT_TRUE(!GetParam().find || GetParam().find(environment()) == outer);
        EXPECT_THAT(m_log.takeEntries(), IsEmpty());
    }

    const void* m_inner = nullptr;
};

ROWS(RivalDeclarationTest, allKinds());

TEST_P(RivalDeclarationTest, GiveOneObjectAndLeaveTheNamePublished)
{
    whenPublished("again() rawset(t, k, v)");

    expectOneObject();

    run(std::string("assert(") + GetParam().published + " ~= nil)");
}

TEST_P(RivalDeclarationTest, GiveOneObjectIfTheNameIsThereAlready)
{
    whenPublished("rawset(t, k, v) again()");

    expectOneObject();
}

TEST_P(RivalDeclarationTest, LeaveTheInnerOneIfTheOuterOneIsRefused)
{
    whenPublished("again() error('strict', 0)");

    GetParam().declare(environment());

    m_log.takeEntries(); // the refusal
    EXPECT_NE(m_inner, nullptr);
    EXPECT_TRUE(!GetParam().find || GetParam().find(environment()) == m_inner);
}

// The metamethod assigns another environment before it declares the name there.
using RivalInAnotherInterpreterTest = RivalDeclarationTest;

TEST_P(RivalInAnotherInterpreterTest, StaysWhereItWasDeclared)
{
    const Environment copy(environment()); // keeps the first interpreter
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    declareAction(
        "assign",
        [&]
        {
            environment() = other;
            m_inner = GetParam().declare(environment());
        });
    whenPublished("assign()");

    expectOneObject();

    run("assert(x ~= nil)");
}

ROWS(
    RivalInAnotherInterpreterTest, // in no namespace
    std::vector<Kind>(allKinds().begin(), allKinds().begin() + 3));

class RivalUserTypeTest : public NamespaceFixture
{
protected:
    // Has the first publishing of a global declare the type `x` as well.
    void declareAgainWhenPublished()
    {
        declareAction("declareAgain", [this] { environment().setUserType("x"); });
        run("local rawset, again, isDone = rawset, declareAgain, false "
            "setmetatable(_G, {__newindex = function(t, k, v) "
            "    if not isDone then isDone = true again() end rawset(t, k, v) end})");
    }

    // Gives `type` a field that is 42 of every instance, and has a script read it.
    void expectUsable(UserType& type)
    {
        UserTypeFieldDescriptor field;
        field.getter = [](void*) { return 42; };
        field.name = "value";
        type.setField(field);
        environment().setObject("object", "x", this);
        run("assert(object.value == 42)");
    }
};

TEST_F(RivalUserTypeTest, IsUsable)
{
    declareAgainWhenPublished();

    expectUsable(*environment().setUserType("x"));
}

TEST_F(RivalUserTypeTest, IsUsableWhenItIsInstalledAgain)
{
    environment().setUserType("x");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    declareAgainWhenPublished();
    UserType* const type = environment().setUserType("x");
    m_log.takeEntries(); // that it was declared already, twice

    expectUsable(*type);
}

// Dispatchers that a script took from the type while it was being published.

TEST_F(RivalUserTypeTest, LeavesNoDispatcherThatReadsWhatIsGone)
{
    declareAction("declareAgain", [this] { environment().setUserType("a::x"); });
    run("local rawset, again = rawset, declareAgain  readers = {} "
        "setmetatable(a, {__newindex = function(t, k, v) "
        "    readers[#readers + 1] = v.__index  again() rawset(t, k, v) end})");
    UserType* const type = environment().setUserType("a::x");
    ASSERT_NE(type, nullptr);
    UserTypeFieldDescriptor field;
    field.getter = [](void*) { return 1; };
    field.name = "value";
    type->setField(field);
    int object = 42;
    environment().setObject("object", "a::x", &object);

    scope().release();

    m_log.takeEntries(); // that it was declared already
    run("assert(#readers > 0) collectgarbage() for _, read in ipairs(readers) do "
        "    assert(not pcall(read, object, 'value')) end");
}

} // namespace tbScripts::test
