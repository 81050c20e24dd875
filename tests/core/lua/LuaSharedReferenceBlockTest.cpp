// A view assigned to one of several holders: all see the new value, and each slot is freed once.

#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "core/lua/references/LuaScriptObjectInterpreterView.h"
#include "support/LuaStateFixture.h"

#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <vector>

namespace tbScripts::test
{

using lua::LuaCallbackScope;
using lua::LuaScriptObjectInterpreterReference;
using lua::LuaScriptObjectInterpreterView;

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

TEST_F(LuaSharedReferenceBlockTest, AllHoldersDesignateTheNewValue)
{
    assignView(m_holders[1]);

    EXPECT_EQ(textOf(m_holders[0]), "new");
    EXPECT_EQ(textOf(m_holders[1]), "new");
    EXPECT_EQ(textOf(m_holders[2]), "new");
    EXPECT_EQ(m_holders[0].getUseCount(), 1U);
}

TEST_F(LuaSharedReferenceBlockTest, SlotOfTheOldValueIsFreed)
{
    assignView(m_holders[1]);

    EXPECT_EQ(countOwnSlots(), 1);
}

TEST_F(LuaSharedReferenceBlockTest, NewValueStaysUntilTheLastHolderGoes)
{
    assignView(m_holders[1]);

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
