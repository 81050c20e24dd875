// A leaf has promised not to call the library. If it does, nothing happens to the interpreter.

#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "support/LuaStateFixture.h"
#include "support/ReactingLogger.h"

#include <tbScripts/typed/LeafResult.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

namespace tbScripts::test
{

namespace
{

constexpr const char* REFUSED =
    "A leaf function called the library, which it promised not to do. Call having no effect.";

/// As an entry does.
class RunningLeaf
{
public:
    explicit RunningLeaf(lua::LuaStateSlot& slot)
        : m_guard(slot.getLeafGuard())
    {
        m_guard.running = 1;
    }

    RunningLeaf(const RunningLeaf&) = delete;
    RunningLeaf& operator=(const RunningLeaf&) = delete;

    ~RunningLeaf() { m_guard.running = 0; }

private:
    typed::LeafGuard& m_guard;
};

class LeafGuardTest : public LuaStateFixture
{
protected:
    ScriptObjectReference makeReference()
    {
        ScriptObjectReference reference =
            lua::LuaScriptObjectInterpreterReference::make(handle(), PARAM_TYPE_SCRIPT_OBJECT);
        lua_createtable(state(), 0, 0);
        lua::LuaScriptObjectInterpreterReference::of(reference).anchor(state());
        return reference;
    }

    bool enters(lua::LuaHostCall::ENTRY entry)
    {
        return lua::LuaHostCall(handle(), entry).getState() != nullptr;
    }
};

} // namespace

TEST_F(LeafGuardTest, CallIsRefused)
{
    {
        const RunningLeaf leaf(slot());
        lua::LuaHostCall call(handle());
        EXPECT_TRUE(call.isRefused());
        EXPECT_FALSE(call.run([](lua_State*) { ADD_FAILURE(); }));
    }
    expectLogged(REFUSED, "LuaEnvironment");
    EXPECT_TRUE(enters(lua::LuaHostCall::ENTRY::HOST));
}

TEST_F(LeafGuardTest, UpkeepIsRefusedToo)
{
    {
        const RunningLeaf leaf(slot());
        EXPECT_FALSE(enters(lua::LuaHostCall::ENTRY::UPKEEP));
    }
    expectLogged(REFUSED, "LuaEnvironment");
    EXPECT_TRUE(enters(lua::LuaHostCall::ENTRY::UPKEEP));
}

TEST_F(LeafGuardTest, TeardownStillAdmitsUpkeepOnly)
{
    slot().beginTeardown();
    {
        const RunningLeaf leaf(slot());
        EXPECT_TRUE(slot().isTearingDown());
        EXPECT_FALSE(enters(lua::LuaHostCall::ENTRY::UPKEEP));
    }
    expectLogged(REFUSED, "LuaEnvironment");
    EXPECT_FALSE(enters(lua::LuaHostCall::ENTRY::HOST));
    EXPECT_TRUE(enters(lua::LuaHostCall::ENTRY::UPKEEP));
}

TEST_F(LeafGuardTest, LogReceiverIsRefusedInSilence)
{
    std::size_t received = 0;
    {
        const ReactingLogger receiver(
            [&]
            {
                ++received;
                EXPECT_FALSE(enters(lua::LuaHostCall::ENTRY::HOST));
            });
        const RunningLeaf leaf(slot());
        EXPECT_FALSE(enters(lua::LuaHostCall::ENTRY::HOST));
    }
    EXPECT_EQ(received, 1U);
}

TEST_F(LeafGuardTest, ReferenceThatIsReleasedInsideIsFreedLater)
{
    const int before = countRegistrySlots();
    ScriptObjectReference reference = makeReference();
    {
        lua::LuaHostCall call(handle());
        {
            const RunningLeaf leaf(slot());
            reference = ScriptObjectReference();
            EXPECT_EQ(countRegistrySlots(), before + 1);
        }
    }
    EXPECT_EQ(countRegistrySlots(), before);
}

TEST_F(LeafGuardTest, OwnReleaseOfAReferenceRunsLater)
{
    int released = 0;
    auto reference = std::make_unique<lua::LuaScriptObjectInterpreterReference>(
        handle(),
        PARAM_TYPE_SCRIPT_OBJECT,
        7,
        [&](lua_State* inner, std::int64_t key, FUNCTION_PARAMETER_TYPE type)
        {
            EXPECT_EQ(inner, state());
            EXPECT_EQ(key, 7);
            EXPECT_EQ(type, PARAM_TYPE_SCRIPT_OBJECT);
            ++released;
        });
    {
        lua::LuaHostCall call(handle());
        {
            const RunningLeaf leaf(slot());
            reference.reset();
            EXPECT_EQ(released, 0);
        }
    }
    EXPECT_EQ(released, 1);
}

TEST_F(LeafGuardTest, ReferenceThatWaitsMayMissTheState)
{
    ScriptObjectReference reference = makeReference();
    {
        const RunningLeaf leaf(slot());
        reference = ScriptObjectReference();
    }
    closeState();
}

TEST_F(LeafGuardTest, ExceptionIsReported)
{
    typed::reportLeafThrew();
    expectLogged(
        "A leaf function has thrown an exception, which it promised not to do.", "LuaFunction");
}

TEST(LeafResultTest, NumbersStayWhatTheyAre)
{
    for (const double number :
         {0.0,
          -1.5,
          1e300,
          std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()})
    {
        EXPECT_EQ(typed::asNumber(number), number);
        EXPECT_EQ(typed::asNumber(static_cast<float>(number)), static_cast<float>(number));
    }
    EXPECT_TRUE(std::isnan(typed::asNumber(std::numeric_limits<double>::quiet_NaN())));
    EXPECT_TRUE(std::isnan(typed::asNumber(std::numeric_limits<float>::quiet_NaN())));
}

TEST(LeafResultTest, NegativeNansBecomePlainOnes)
{
    double number = 0;
    std::memset(&number, 0xFF, sizeof(number));
    EXPECT_TRUE(std::isnan(typed::asNumber(number)));
    EXPECT_FALSE(std::signbit(typed::asNumber(number)));
    float small = 0;
    std::memset(&small, 0xFF, sizeof(small));
    EXPECT_TRUE(std::isnan(typed::asNumber(small)));
    EXPECT_FALSE(std::signbit(typed::asNumber(small)));
}

} // namespace tbScripts::test
