#include "core/lua/LuaStateSlot.h"

#include "core/lua/calls/LuaCallbackScope.h"
#include "support/LuaStateFixture.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

/// Says when it is destroyed.
class JournalEntry : public lua::LuaKeptObject
{
public:
    JournalEntry(std::vector<std::string>& journal, std::string name)
        : m_journal(journal)
        , m_name(std::move(name))
    {
    }

    ~JournalEntry() { m_journal.push_back(m_name); }

private:
    std::vector<std::string>& m_journal;
    std::string m_name;
};

} // namespace

using LuaStateSlotTest = LuaStateFixture;

TEST_F(LuaStateSlotTest, OpenSlotRunsOnItsMainThread)
{
    EXPECT_TRUE(slot().isOpen());
    EXPECT_TRUE(slot().hasMemory());
    EXPECT_TRUE(slot().isMainThread(slot().getRunning()));
    EXPECT_FALSE(slot().isRunning());
    EXPECT_FALSE(slot().isTearingDown());
    EXPECT_EQ(slot().getInnermostCallback(), nullptr);
}

TEST_F(LuaStateSlotTest, ClosedSlotHasNothingLeft)
{
    closeState();

    EXPECT_FALSE(slot().isOpen());
    EXPECT_FALSE(slot().hasMemory());
    EXPECT_FALSE(slot().isClosing());
    EXPECT_EQ(slot().getRunning(), nullptr);
}

TEST_F(LuaStateSlotTest, CallbacksChangeThreadAndScopeTogether)
{
    lua_State* const main = state();
    lua_State* const coroutine = lua_newthread(main);
    {
        const lua::LuaCallbackScope outer(slot(), coroutine);
        EXPECT_EQ(slot().getRunning(), coroutine);
        EXPECT_EQ(slot().getInnermostCallback(), &outer);
        {
            const lua::LuaCallbackScope inner(slot(), main);
            EXPECT_EQ(slot().getRunning(), main);
            EXPECT_EQ(slot().getInnermostCallback(), &inner);
            EXPECT_FALSE(outer.isInnermost());
        }
        EXPECT_EQ(slot().getRunning(), coroutine);
        EXPECT_TRUE(outer.isInnermost());
    }
    EXPECT_EQ(slot().getRunning(), main);
    EXPECT_EQ(slot().getInnermostCallback(), nullptr);
    lua_settop(main, 0);
}

TEST_F(LuaStateSlotTest, CallbackOfAClosedStateLeavesItClosed)
{
    closeState();
    lua_State* const stale = nullptr;
    {
        const lua::LuaCallbackScope scope(slot(), stale);
        EXPECT_EQ(slot().getRunning(), nullptr);
    }
    EXPECT_EQ(slot().getRunning(), nullptr);
}

TEST_F(LuaStateSlotTest, DeferredActionsWaitForTheOutermostHostCall)
{
    int runs = 0;
    EXPECT_EQ(slot().enterHostCall(), 0U);
    EXPECT_EQ(slot().enterHostCall(), 1U);
    slot().defer([&runs] { ++runs; });

    slot().leaveHostCall();
    EXPECT_TRUE(slot().isInHostCall());
    EXPECT_EQ(runs, 0);

    slot().leaveHostCall();
    EXPECT_FALSE(slot().isInHostCall());
    EXPECT_EQ(runs, 1);
}

TEST_F(LuaStateSlotTest, FunctionsOfTheInterpreterAreThoseFromBeforeTheScripts)
{
    push("rawget, type = nil, nil return nil");

    slot().pushRawget(state());
    slot().pushType(state());

    EXPECT_TRUE(lua_iscfunction(state(), -1));
    EXPECT_TRUE(lua_iscfunction(state(), -2));
    lua_settop(state(), 0);
}

TEST_F(LuaStateSlotTest, KeptObjectsAreDestroyedAfterTheStateInTheReverseOrder)
{
    std::vector<std::string> journal;
    auto first = std::make_shared<JournalEntry>(journal, "first");
    slot().keepUntilClosed(first);
    slot().keepUntilClosed(first); // once is enough
    slot().keepUntilClosed(std::make_shared<JournalEntry>(journal, "second"));
    EXPECT_TRUE(first->isKeptUntilClosed());
    first.reset();
    EXPECT_THAT(journal, IsEmpty());

    closeState();

    EXPECT_THAT(journal, ElementsAre("second", "first"));
}

TEST_F(LuaStateSlotTest, ManyKeptObjectsAreReleasedOneByOne)
{
    constexpr int MANY = 200000; // as a chain of destructors they would overflow the stack
    std::vector<std::string> journal;
    for (int i = 0; i < MANY; ++i)
        slot().keepUntilClosed(std::make_shared<JournalEntry>(journal, ""));

    closeState();

    EXPECT_EQ(journal.size(), static_cast<std::size_t>(MANY));
}

} // namespace tbScripts::test
