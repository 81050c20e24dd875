// Parameters of user types that were read from a script, and the view that they carry.

#include "bindings/lua/values/LuaCallBridge.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/AllocationCounter.h"
#include "support/LuaStateFixture.h"

#include <tbScripts/FunctionParameter.h>
#include <tbScripts/ScriptObjectReference.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <utility>

namespace tbScripts::test
{

class FunctionParameterViewTest : public LuaStateFixture
{
protected:
    // A call with two doors as arguments.
    void SetUp() override
    {
        declareUserType("Door");
        lua::pushInstance(slot(), state(), &m_front, false, "Door");
        lua::pushInstance(slot(), state(), &m_back, false, "Door");
        m_scope = std::make_unique<lua::LuaCallbackScope>(slot(), state());
    }

    void TearDown() override
    {
        endCall();
        LuaStateFixture::TearDown();
    }

    void endCall()
    {
        m_scope.reset();
        if (state())
            lua_settop(state(), 0);
    }

    void read(FunctionParameter& parameter, int stackIndex)
    {
        lua::LuaCallBridge(*m_scope, "open").readParameter(parameter, stackIndex);
    }

    FunctionParameter readDoor(int stackIndex)
    {
        FunctionParameter door = FunctionParameter::ofType(PARAM_TYPE_USER_TYPE_OWNED, "Door");
        read(door, stackIndex);
        return door;
    }

    // Whether the view of `parameter` looks at the argument in slot `stackIndex`.
    bool looksAt(const FunctionParameter& parameter, int stackIndex)
    {
        const ScriptObjectReference reference(parameter.getUserTypeView());
        lua::pushReferenced(state(), reference, handle());
        const bool isSame = lua_rawequal(state(), -1, stackIndex) != 0;
        lua_pop(state(), 1);
        return isSame;
    }

    static ScriptObjectInterpreterView* viewOf(const FunctionParameter& parameter)
    {
        return parameter.getUserTypeView().getInterpreterView();
    }

    int m_front = 0;
    int m_back = 0;

private:
    std::unique_ptr<lua::LuaCallbackScope> m_scope;
};

TEST_F(FunctionParameterViewTest, ViewStaysGoodUntilTheLastCopyIsCleared)
{
    auto door = std::make_unique<FunctionParameter>(readDoor(1));
    FunctionParameter assigned(7);
    assigned = *door;
    const FunctionParameter copy(*door);

    door.reset();
    assigned = FunctionParameter(7);

    EXPECT_TRUE(looksAt(copy, 1));
}

TEST_F(FunctionParameterViewTest, MoveTakesTheView)
{
    FunctionParameter door = readDoor(1);
    const ScriptObjectInterpreterView* const view = viewOf(door);

    const FunctionParameter moved(std::move(door));

    EXPECT_EQ(viewOf(moved), view);
    EXPECT_EQ(viewOf(door), nullptr);
    EXPECT_TRUE(looksAt(moved, 1));
}

TEST_F(FunctionParameterViewTest, SelfAssignmentKeepsTheView)
{
    FunctionParameter door = readDoor(1);
    const FunctionParameter& same = door;

    door = same;

    EXPECT_TRUE(looksAt(door, 1));
}

TEST_F(FunctionParameterViewTest, ViewOfOneHolderIsRefilledInPlace)
{
    FunctionParameter door = readDoor(1);
    const ScriptObjectInterpreterView* const view = viewOf(door);
    const AllocationCounter counter;

    read(door, 2);

    EXPECT_EQ(counter.count(), 0U);
    EXPECT_EQ(viewOf(door), view);
    EXPECT_TRUE(looksAt(door, 2));
}

TEST_F(FunctionParameterViewTest, PreparingAndNilDropTheView)
{
    FunctionParameter prepared = readDoor(1);
    FunctionParameter readNil = readDoor(1);
    lua_pushnil(state());

    prepared.prepareForInternalType();
    read(readNil, 3);

    for (const FunctionParameter* door : {&prepared, &readNil})
    {
        EXPECT_EQ(viewOf(*door), nullptr);
        EXPECT_EQ(door->getUserTypeObject(), nullptr);
    }
}

} // namespace tbScripts::test
