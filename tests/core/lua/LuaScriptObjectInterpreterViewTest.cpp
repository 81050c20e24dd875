#include "core/lua/references/LuaScriptObjectInterpreterView.h"

#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/InjectedAllocator.h"
#include "support/LuaStateFixture.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

using lua::LuaCallbackScope;
using lua::LuaScriptObjectInterpreterReference;
using lua::LuaScriptObjectInterpreterView;

class LuaScriptObjectInterpreterViewTest : public LuaStateFixture
{
protected:
    // Begins a call with one argument, the table `{ name = <name> }` in slot 1.
    LuaCallbackScope& beginCall(const std::string& name = "argument")
    {
        push("return { name = '" + name + "' }");
        m_scope = std::make_unique<LuaCallbackScope>(slot(), state());
        return *m_scope;
    }

    void endCall()
    {
        m_scope.reset();
        if (state())
            lua_settop(state(), 0);
    }

    void TearDown() override
    {
        if (m_scope)
            endCall();
        LuaStateFixture::TearDown();
    }

    // The name of the table on top of the stack, which is popped.
    std::string popName(lua_State* thread)
    {
        std::string name = "no table";
        if (lua_istable(thread, -1))
        {
            lua_getfield(thread, -1, "name");
            name = lua_tostring(thread, -1);
            lua_pop(thread, 1);
        }
        lua_pop(thread, 1);
        return name;
    }

    std::string nameOfReferenced(const ScriptObjectReference& reference)
    {
        lua::pushReferenced(state(), reference, handle());
        return popName(state());
    }

private:
    std::unique_ptr<LuaCallbackScope> m_scope;
};

TEST_F(LuaScriptObjectInterpreterViewTest, MakesNoReferenceBeforeItIsLent)
{
    beginCall();
    LuaScriptObjectInterpreterView view;

    EXPECT_EQ(view.createReference(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterViewTest, MakesNoReferenceToIndexZero)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 0);

    EXPECT_EQ(view.createReference(), nullptr);
    EXPECT_EQ(lua_gettop(state()), 1);
}

TEST_F(LuaScriptObjectInterpreterViewTest, MakesAReferenceOfItsKindToItsStackSlot)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_FUNCTION, 1);

    const ScriptObjectReference reference(view.createReference());

    EXPECT_EQ(nameOfReferenced(reference), "argument");
    EXPECT_EQ(reference.getType(), 8U);
    EXPECT_EQ(lua_gettop(state()), 1);
}

TEST_F(LuaScriptObjectInterpreterViewTest, HandsItsReleaseActionOn)
{
    std::vector<std::int64_t> released;
    LuaScriptObjectInterpreterView view;
    view.lend(
        beginCall(),
        PARAM_TYPE_SCRIPT_OBJECT,
        1,
        [&released](lua_State*, std::int64_t slotNumber, FUNCTION_PARAMETER_TYPE)
        { released.push_back(slotNumber); });
    ScriptObjectInterpreterReference* const reference = view.createReference();

    delete reference;

    ASSERT_EQ(released.size(), 1U);
    EXPECT_GT(released.front(), 0);
}

TEST_F(LuaScriptObjectInterpreterViewTest, EachReferenceHasASlotOfItsOwnAndTheViewNone)
{
    const int before = countRegistrySlots();
    LuaScriptObjectInterpreterView view;

    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 1);
    EXPECT_EQ(countRegistrySlots(), before);
    const ScriptObjectReference first(view.createReference());
    const ScriptObjectReference second(view.createReference());

    EXPECT_EQ(countRegistrySlots(), before + 2);
}

TEST_F(LuaScriptObjectInterpreterViewTest, ReferenceOutlivesTheCall)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 1);
    const ScriptObjectReference reference(view.createReference());

    endCall();
    lua_gc(state(), LUA_GCCOLLECT, 0);

    EXPECT_EQ(nameOfReferenced(reference), "argument");
}

TEST_F(LuaScriptObjectInterpreterViewTest, IsOverAfterItsCallOrWhenItIsEndedEarly)
{
    LuaScriptObjectInterpreterView view;
    LuaScriptObjectInterpreterView endedEarly;
    LuaCallbackScope& scope = beginCall();
    view.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 1);
    endedEarly.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 1);

    endedEarly.end();
    EXPECT_EQ(endedEarly.createReference(), nullptr);
    endCall();

    EXPECT_EQ(view.createReference(), nullptr);
    EXPECT_FALSE(view.pushValue(state()));
    const ScriptObjectReference reference{ScriptObjectView(&view)};
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterViewTest, MayGoBeforeItsCallInAnyOrder)
{
    LuaCallbackScope& scope = beginCall();
    std::vector<std::unique_ptr<LuaScriptObjectInterpreterView>> views;
    for (int count = 0; count < 3; ++count)
    {
        views.push_back(std::make_unique<LuaScriptObjectInterpreterView>());
        views.back()->lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 1);
    }

    views[1].reset();
    views[2].reset();
    endCall();

    EXPECT_EQ(views[0]->createReference(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterViewTest, LentAgainLooksAtTheNewSlot)
{
    LuaScriptObjectInterpreterView view;
    LuaCallbackScope& scope = beginCall("first");
    push("return { name = 'second' }");
    view.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 1);

    view.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 2);

    EXPECT_EQ(nameOfReferenced(ScriptObjectReference(view.createReference())), "second");
}

TEST_F(LuaScriptObjectInterpreterViewTest, LooksAtNothingWhileAnInnerCallMovedTheStack)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 1);

    const LuaCallbackScope inner(slot(), state());

    EXPECT_EQ(view.createReference(), nullptr);
    EXPECT_FALSE(view.pushValue(state()));
}

TEST_F(LuaScriptObjectInterpreterViewTest, KeptOneStaysGoodDuringAnInnerCallInASingleSlot)
{
    const int before = countRegistrySlots();
    LuaScriptObjectInterpreterView view;
    LuaCallbackScope& scope = beginCall();
    view.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, 1);
    std::string errorText;

    ASSERT_TRUE(scope.keepViews(errorText));
    scope.keepViews(errorText);
    EXPECT_EQ(countRegistrySlots(), before + 1);
    {
        const LuaCallbackScope inner(slot(), state());
        EXPECT_EQ(nameOfReferenced(ScriptObjectReference(view.createReference())), "argument");
    }
    endCall();

    EXPECT_EQ(countRegistrySlots(), before);
}

TEST_F(LuaScriptObjectInterpreterViewTest, MakesNoReferenceAfterTheStateClosed)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 1);
    lua_settop(state(), 0);

    closeState();

    EXPECT_EQ(view.createReference(), nullptr);
}

TEST_F(LuaScriptObjectInterpreterViewTest, ReferenceOutlivesTheCoroutineThatItWasBornIn)
{
    lua_State* const coroutine = lua_newthread(state());
    ASSERT_EQ(luaL_loadstring(coroutine, "return { name = 'argument' }"), 0);
    ASSERT_EQ(lua_pcall(coroutine, 0, 1, 0), 0);
    auto scope = std::make_unique<LuaCallbackScope>(slot(), coroutine);
    LuaScriptObjectInterpreterView view;
    view.lend(*scope, PARAM_TYPE_SCRIPT_OBJECT, 1);
    const ScriptObjectReference reference(view.createReference());

    scope.reset();
    lua_settop(state(), 0);
    lua_gc(state(), LUA_GCCOLLECT, 0);

    EXPECT_EQ(nameOfReferenced(reference), "argument");
}

TEST_F(LuaScriptObjectInterpreterViewTest, MakesAnEmptyReferenceForWantOfMemory)
{
    LuaScriptObjectInterpreterView view;
    view.lend(beginCall(), PARAM_TYPE_SCRIPT_OBJECT, 1);
    std::vector<ScriptObjectReference> references;
    bool hasFailed = false;
    {
        InjectedAllocator allocator(state());
        allocator.refuseAfter(0);

        // The registry has to grow sooner or later.
        while (!hasFailed && references.size() < 1000)
        {
            references.emplace_back(view.createReference());
            hasFailed = !references.back().getInterpreterReference();
        }
    }

    EXPECT_TRUE(hasFailed);
    EXPECT_EQ(lua_gettop(state()), 1);
    expectLogged("not enough memory", "LuaEnvironment");
}

// A view assigned to one of several holders: all see the new value, and each slot is freed once.
class LuaSharedReferenceBlockTest : public LuaStateFixture
{
protected:
    void SetUp() override
    {
        m_slotsBefore = countRegistrySlots();
        push("return 'old'");
        auto reference = std::make_unique<LuaScriptObjectInterpreterReference>(
            handle(), PARAM_TYPE_SCRIPT_OBJECT, 0);
        reference->anchor(state());
        m_holders.emplace_back(reference.release());
        m_holders.push_back(m_holders.front());
        m_holders.push_back(m_holders.front());
    }

    // Assigns a view on the text "new" to `target`, as a host function would.
    void assignView(ScriptObjectReference& target)
    {
        lua_pushliteral(state(), "new");
        {
            LuaCallbackScope scope(slot(), state());
            LuaScriptObjectInterpreterView view;
            view.lend(scope, PARAM_TYPE_SCRIPT_OBJECT, lua_gettop(state()));
            target = ScriptObjectView(&view);
        }
        lua_pop(state(), 1);
    }

    std::string textOf(const ScriptObjectReference& reference)
    {
        lua::pushReferenced(state(), reference, handle());
        const char* const text = lua_tostring(state(), -1);
        const std::string result = text ? text : "nothing";
        lua_pop(state(), 1);
        return result;
    }

    int countOwnSlots() const { return countRegistrySlots() - m_slotsBefore; }

    std::vector<ScriptObjectReference> m_holders; // three that share one value

private:
    int m_slotsBefore = 0;
};

TEST_F(LuaSharedReferenceBlockTest, AllHoldersDesignateTheNewValueUntilTheLastGoes)
{
    assignView(m_holders[1]);

    EXPECT_EQ(textOf(m_holders[0]), "new");
    EXPECT_EQ(textOf(m_holders[1]), "new");
    EXPECT_EQ(textOf(m_holders[2]), "new");
    EXPECT_EQ(m_holders[0].getUseCount(), 1U);
    EXPECT_EQ(countOwnSlots(), 1) << "the slot of the old value is not freed";
    m_holders.pop_back();
    EXPECT_EQ(textOf(m_holders[0]), "new");
    m_holders.pop_back();
    EXPECT_EQ(textOf(m_holders[0]), "new");
    m_holders.pop_back();
    EXPECT_EQ(countOwnSlots(), 0);
}

TEST_F(LuaSharedReferenceBlockTest, ViewsAssignedByEachHolderFreeEachSlotOnce)
{
    assignView(m_holders[0]);
    assignView(m_holders[1]);
    assignView(m_holders[2]);
    EXPECT_EQ(countOwnSlots(), 1);

    m_holders.clear();

    EXPECT_EQ(countOwnSlots(), 0);
}

TEST_F(LuaSharedReferenceBlockTest, HoldersMayOutliveTheState)
{
    assignView(m_holders[1]);

    closeState();
    m_holders.clear();

    EXPECT_EQ(state(), nullptr);
}

} // namespace tbScripts::test
