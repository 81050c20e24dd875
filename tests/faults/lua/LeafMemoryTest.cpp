// For n = 0, 1, 2, ... until nothing is refused any more: the interpreter gets no memory from its
// n-th request on while a leaf is made. The function works in any case.

#include "bindings/lua/leaves/LuaLeaves.h"
#include "core/lua/calls/LuaHostCall.h"
#include "support/InjectedAllocator.h"
#include "support/InterpreterCalls.h"
#include "support/LeafFixture.h"

#include <cstddef>

namespace tbScripts::test
{

namespace
{

using typed::KIND;

double twoOfLeaf(typed::LeafGuard* /*guard*/, void* /*object*/)
{
    return 2;
}

int oneOfFunction(lua_State* state)
{
    lua_pushnumber(state, 1);
    return 1;
}

class LeafMemoryTest : public LeafFixture
{
protected:
    // Publishes `f`, contained. Returns whether that worked.
    bool wrapProtected()
    {
        std::string errorText;
        return lua::LuaHostCall(handle()).run(
            [this](lua_State* inner)
            {
                const typed::Parameter parameters[] = {
                    {KIND::DOUBLE}, {KIND::OBJECT, false, &BODY}};
                typed::Signature signature{};
                signature.parameters = parameters;
                signature.count = 1;
                const typed::Leaf leaf{entryOf(&twoOfLeaf)};
                signature.leaf = &leaf;
                lua_pushcfunction(inner, &oneOfFunction);
                m_isLeaf = lua::wrapLeaf(slot(), inner, signature, nullptr);
                lua_setglobal(inner, "f");
            },
            errorText);
    }

    // Returns whether memory was refused.
    bool wrapWithout(std::size_t allowed)
    {
        InjectedAllocator memory(state());
        memory.refuseAfter(allowed);
        const bool isDone = wrapProtected();
        EXPECT_TRUE(isDone || memory.hasRefused());
        memory.allowAll();
        lua_settop(state(), 0);
        return memory.hasRefused();
    }

    bool m_isLeaf = false;
};

} // namespace

// Each round is a state of its own, because a state in which the first one fails has none. The
// memory ends at a ceiling: see `hasRoom` in LuaForeignInterface.cpp.
TEST_F(LeafMemoryTest, FirstLeafMayLackIt)
{
    constexpr std::size_t STEP = 256;
    ASSERT_TRUE(wrapProtected()); // what is learnt once for the process
    bool hadNone = false;
    bool hadSome = false;
    for (std::size_t ceiling = 0; ceiling < 400 * STEP; ceiling += STEP)
    {
        StateMemory memory;
        reopenState();
        declareBody();
        memory.refuseAbove(ceiling);
        wrapProtected();
        memory.allowAll();
        lua_settop(state(), 0);
        EXPECT_TRUE(wrapProtected());
        EXPECT_EQ(compiled("f(body)"), m_isLeaf ? "2" : "1") << ceiling;
        EXPECT_EQ(run("return package.loaded.ffi"), "nil") << ceiling;
        hadNone = hadNone || !m_isLeaf;
        hadSome = hadSome || m_isLeaf;
        closeState();
    }
    EXPECT_TRUE(hadNone);
    EXPECT_TRUE(hadSome);
    reopenState();
}

TEST_F(LeafMemoryTest, LaterLeafMayLackIt)
{
    ASSERT_TRUE(wrapProtected());
    ASSERT_TRUE(m_isLeaf);
    std::size_t allowed = 0;
    while (wrapWithout(allowed))
    {
        ++allowed;
        EXPECT_TRUE(wrapProtected());
        EXPECT_TRUE(m_isLeaf);
        EXPECT_EQ(compiled("f(body)"), "2") << allowed;
    }
    EXPECT_GT(allowed, 5U);
}

} // namespace tbScripts::test
