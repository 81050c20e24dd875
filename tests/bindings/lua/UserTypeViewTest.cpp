#include "bindings/lua/values/LuaCallBridge.h"
#include "support/LuaFunctionFixture.h"
#include "support/TypeTable.h"

#include "tbScripts/ScriptObjectInterpreterView.h"
#include "tbScripts/ScriptObjectView.h"

#include <memory>
#include <optional>
#include <utility>

namespace tbScripts::test
{

class UserTypeViewTest : public LuaFunctionFixture
{
protected:
    UserTypeViewTest()
    {
        setInstance("first", "Enemy", &m_first, true);
        setInstance("second", "Enemy", &m_second, true);
    }

    /// Declares a function with an owned `Enemy` and a script function as parameters.
    template <typename Action>
    void declareWithEnemy(const std::string& name, Action action)
    {
        lua::LuaFunction& function = declare(name, doing(std::move(action)));
        function.addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Enemy");
        function.addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    }

    /// Returns a callable's action that makes the reference.
    auto referring()
    {
        return [this](const Parameters& parameters)
        { m_reference = ScriptObjectReference(parameters[0].getUserTypeView()); };
    }

    /// Returns a callable's action that keeps the view.
    auto keeping()
    {
        return [this](const Parameters& parameters) { m_view = parameters[0].getUserTypeView(); };
    }

    /// Declares `outer`, which keeps its view and calls back, and `inner`, which then makes the
    /// reference of that.
    void declareNested()
    {
        declareWithEnemy("inner", [this](auto&) { m_reference = ScriptObjectReference(m_view); });
        declareWithEnemy(
            "outer",
            [this](const Parameters& parameters)
            {
                m_view = parameters[0].getUserTypeView();
                callScript(parameters[1].getScriptObject());
            });
    }

    static bool isEmpty(const ScriptObjectReference& reference)
    {
        return reference.getInterpreterReference() == nullptr;
    }

    bool hasEnded() const { return isEmpty(ScriptObjectReference(m_view)); }

    static const ScriptObjectInterpreterView* viewOf(const Parameters& parameters)
    {
        return parameters[0].getUserTypeView().getInterpreterView();
    }

    int m_first = 0;
    int m_second = 0;
    ScriptObjectView m_view;                          // what a callable keeps
    std::optional<ScriptObjectReference> m_reference; // what a callable makes
};

TEST_F(UserTypeViewTest, ReferenceMadeDuringTheCallDesignatesTheArgument)
{
    declareWithEnemy("take", referring());
    run("take(first, print)");
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
    EXPECT_EQ(m_reference->getType(), 9U);
}

TEST_F(UserTypeViewTest, ReferenceMadeInACoroutineOutlivesIt)
{
    declareWithEnemy("take", referring());
    run("coroutine.wrap(function() take(first, print) end)() collectgarbage()");
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
}

TEST_F(UserTypeViewTest, ReferenceKeepsTheInstanceAlive)
{
    declareWithEnemy("take", referring());
    run("weak = setmetatable({ first }, { __mode = 'v' }) take(first, print)");
    run("first = nil collectgarbage() collectgarbage()");
    is("weak[1] ~= nil", "true");
}

TEST_F(UserTypeViewTest, ReferenceMadeAfterTheCallIsEmpty)
{
    declareWithEnemy("take", keeping());
    run("take(first, print)");
    EXPECT_TRUE(hasEnded());
}

TEST_F(UserTypeViewTest, ReferenceMadeAfterACallThatThrewIsEmpty)
{
    declareWithEnemy(
        "take",
        [this](const Parameters& parameters)
        {
            m_view = parameters[0].getUserTypeView();
            throw 7;
        });
    run("pcall(take, first, print)");
    EXPECT_TRUE(hasEnded());
}

TEST_F(UserTypeViewTest, ReferenceMadeFromAParameterThatWasKeptIsEmpty)
{
    FunctionParameter kept;
    declareWithEnemy("take", [&kept](const Parameters& parameters) { kept = parameters[0]; });
    run("take(first, print)");
    EXPECT_TRUE(isEmpty(ScriptObjectReference(kept.getUserTypeView())));
    EXPECT_EQ(kept.getUserTypeObject(), &m_first);
}

TEST_F(UserTypeViewTest, ReferenceMadeAfterTheStateClosedIsEmpty)
{
    declareWithEnemy("take", keeping());
    run("take(first, print)");
    closeState();
    EXPECT_TRUE(hasEnded());
}

TEST_F(UserTypeViewTest, ReferenceMadeDuringANestedCallDesignatesTheOuterArgument)
{
    declareNested();
    run("outer(first, function() inner(second, print) end)");
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
}

TEST_F(UserTypeViewTest, ReferenceMadeDuringANestedCallInACoroutineDesignatesTheOuterArgument)
{
    declareNested();
    run("coroutine.wrap(function()"
        "  outer(first, function()"
        "    coroutine.wrap(function() inner(second, print) end)()"
        "  end)"
        " end)()");
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
}

TEST_F(UserTypeViewTest, EachOfManyNestedCallsDesignatesItsOwnArgument)
{
    std::vector<bool> seen;
    declareWithEnemy(
        "enter",
        [this, &seen](const Parameters& parameters)
        {
            const ScriptObjectView view = parameters[0].getUserTypeView();
            callScript(parameters[1].getScriptObject());
            seen.push_back(isGlobal(ScriptObjectReference(view), "first"));
        });
    run("enter(first, function()"
        "  enter(second, function() enter(first, function() end) end)"
        "  enter(second, function() end)"
        " end)");
    EXPECT_THAT(seen, ElementsAre(true, false, false, true));
}

TEST_F(UserTypeViewTest, InnerViewHasEndedWhenTheOuterCallGoesOn)
{
    bool isInnerEmpty = false;
    declareWithEnemy("inner", keeping());
    declareWithEnemy(
        "outer",
        [&](const Parameters& parameters)
        {
            callScript(parameters[1].getScriptObject());
            isInnerEmpty = hasEnded();
            referring()(parameters);
        });
    run("outer(first, function() inner(second, print) end)");
    EXPECT_TRUE(isInnerEmpty);
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
}

TEST_F(UserTypeViewTest, ViewKeptFromAnEarlierCallStaysEmptyDuringLaterOnes)
{
    std::vector<bool> isKeptEmpty;
    declareWithEnemy(
        "take",
        [this, &isKeptEmpty](const Parameters& parameters)
        {
            if (isKeptEmpty.empty())
                m_view = parameters[0].getUserTypeView();
            isKeptEmpty.push_back(hasEnded());
            referring()(parameters);
        });
    run("take(first, print) take(second, print) take(second, print)");
    EXPECT_THAT(isKeptEmpty, ElementsAre(false, true, true));
    EXPECT_TRUE(isGlobal(*m_reference, "second"));
}

TEST_F(UserTypeViewTest, ViewThatNobodyKeptIsUsedAgain)
{
    std::vector<const ScriptObjectInterpreterView*> views;
    declareWithEnemy("take", [&views](auto& parameters) { views.push_back(viewOf(parameters)); });
    run("take(first, print) take(second, print)");
    ASSERT_EQ(views.size(), 2U);
    EXPECT_NE(views[0], nullptr);
    EXPECT_EQ(views[0], views[1]);
}

TEST_F(UserTypeViewTest, ViewThatSomebodyKeptIsLeftAlone)
{
    const ScriptObjectInterpreterView* last = nullptr;
    declareWithEnemy(
        "take",
        [this, &last](const Parameters& parameters)
        {
            last = viewOf(parameters);
            if (!m_view.getInterpreterView())
                m_view = parameters[0].getUserTypeView();
        });
    run("take(first, print) take(second, print)");
    EXPECT_NE(last, nullptr);
    EXPECT_NE(last, m_view.getInterpreterView());
}

TEST_F(UserTypeViewTest, CopiesOfAParameterShareItsView)
{
    const ScriptObjectInterpreterView* original = nullptr;
    FunctionParameter copy;
    declareWithEnemy(
        "take",
        [&](const Parameters& parameters)
        {
            original = viewOf(parameters);
            copy = parameters[0];
            m_reference = ScriptObjectReference(copy.getUserTypeView());
        });
    run("take(first, print)");
    EXPECT_EQ(copy.getUserTypeView().getInterpreterView(), original);
    EXPECT_TRUE(isGlobal(*m_reference, "first"));
}

TEST_F(UserTypeViewTest, SharedViewOutlivesTheFunctionThatItWasLentFor)
{
    auto copy = std::make_unique<FunctionParameter>();
    declareWithEnemy("take", [&copy](const Parameters& parameters) { *copy = parameters[0]; });
    run("take(first, print)");
    destroyLastFunction();
    EXPECT_TRUE(isEmpty(ScriptObjectReference(copy->getUserTypeView())));
    copy.reset(); // destroys the view, once
}

TEST_F(UserTypeViewTest, NilDropsTheViewOfTheCallBefore)
{
    std::vector<bool> hasView;
    declareWithEnemy(
        "take", [&hasView](auto& parameters) { hasView.push_back(viewOf(parameters) != nullptr); });
    run("take(first, print) take(nil, print) take(second, print)");
    EXPECT_THAT(hasView, ElementsAre(true, false, true));
}

TEST_F(UserTypeViewTest, HostsUserTypeHasNone)
{
    bool hasView = true;
    declare(
        "take", doing([&hasView](auto& parameters) { hasView = viewOf(parameters) != nullptr; }))
        .addParameter(PARAM_TYPE_USER_TYPE, "Enemy");
    run("take(first)");
    EXPECT_FALSE(hasView);
}

TEST_F(UserTypeViewTest, OutputOfAScriptCallHasNoneWhenTheCallReturns)
{
    std::vector<FunctionParameter> outputs{
        FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED, "Enemy")};
    declare(
        "ask",
        doing(
            [this, &outputs](const Parameters& parameters)
            {
                callScript(parameters[0].getScriptObject(), {}, outputs);
                m_reference = ScriptObjectReference(outputs[0].getUserTypeView());
            }))
        .addParameter(PARAM_TYPE_SCRIPT_FUNCTION);
    run("ask(function() return second end)");
    EXPECT_EQ(outputs[0].getUserTypeObject(), &m_second);
    EXPECT_TRUE(isEmpty(*m_reference));
}

TEST_F(UserTypeViewTest, InputToAnotherInterpreterIsABoxThatDoesNotOwn)
{
    lua::LuaStateHandle other = lua::LuaStateHandle::open();
    lua_State* const otherState = other.get();
    // What an index of the first interpreter would find here, and could take for the original.
    publishTypeTable(*other.getSlot(), otherState, "Enemy");
    lua::pushInstance(*other.getSlot(), otherState, &m_second, false, "Enemy");
    static_cast<lua::LuaInstanceBox*>(lua_touserdata(otherState, 1))->isDestroyed = true;
    declareWithEnemy(
        "pass",
        [&](const Parameters& parameters)
        {
            lua::LuaCallbackScope scope(*other.getSlot(), otherState);
            lua::LuaCallBridge(scope, "pass").pushParameter(parameters[0]);
        });

    run("pass(first, print)");

    ASSERT_EQ(lua_gettop(otherState), 2);
    const auto* const box = static_cast<lua::LuaInstanceBox*>(lua_touserdata(otherState, -1));
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->object, &m_first);
    EXPECT_FALSE(box->gcEnabled);
    other.close();
}

TEST_F(UserTypeViewTest, NestedCallsLeaveNoRegistrySlot)
{
    declareNested();
    const std::string nested = "outer(first, function() outer(second, idle) end)";
    // From here on each level keeps the arguments of its last call.
    run("function idle() end " + nested);
    const int slots = countRegistrySlots();
    run("for i = 1, 100 do pcall(outer, first, 7) " + nested + " end");
    EXPECT_EQ(countRegistrySlots(), slots);
    expectLogCount(100);
}

} // namespace tbScripts::test
