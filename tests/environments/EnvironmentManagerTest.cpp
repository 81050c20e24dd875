// The process's environments by name.

#include "support/EnvironmentFixture.h"
#include "support/Farewell.h"

#include <tbScripts/EnvironmentManager.h>

#include <functional>
#include <set>
#include <string>
#include <utility>

namespace tbScripts::test
{

using tbMemory::StringView;

namespace
{

EnvironmentManager& manager()
{
    return EnvironmentManager::getInstanceRef();
}

Environment* find(const StringView& name)
{
    return manager().createOrRetrieve(name);
}

void killManager()
{
    if (EnvironmentManager* const existing = EnvironmentManager::getInstanceIfExisting())
        existing->kill();
}

Environment* makeLua(const StringView& name)
{
    Environment* const environment = find(name);
    environment->setEnvironmentFor(INTERPRETER_LUA);
    return environment;
}

void declare(Environment& environment, const std::string& name, std::function<void()> action)
{
    environment.setFunc(name)->setFunction(
        [action = std::move(action)](const Parameters&)
        {
            action();
            return FunctionParameter::VOID;
        });
}

// Does `action` when the bindings of `environment` go.
void declareFarewell(Environment& environment, std::function<void()> action)
{
    declare(environment, "farewell", [end = makeFarewell(std::move(action))] {});
}

} // namespace

class EnvironmentManagerTest : public LogFixture
{
protected:
    ~EnvironmentManagerTest() override { killManager(); }
};

TEST_F(EnvironmentManagerTest, NewEnvironmentHasItsNameAndNoInterpreter)
{
    Environment* const environment = find("world");

    EXPECT_EQ(environment->getName(), "world");
    EXPECT_EQ(environment->getVar("x", 5), 5);
    expectLogged(
        "Requesting a variable in environment 'world', which has no InterpreterType. This will "
        "have no effect.",
        "Environment");
}

TEST_F(EnvironmentManagerTest, SameNameGivesTheSameEnvironmentAsItIs)
{
    Environment* const environment = makeLua("world");
    environment->setVar("score", 3);

    EXPECT_EQ(find("world"), environment);
    EXPECT_EQ(environment->getVar("score", -1), 3);
}

TEST_F(EnvironmentManagerTest, NamesInOtherLettersAreOtherEnvironments)
{
    EXPECT_NE(find("world"), find("World"));
    EXPECT_EQ(find("World")->getName(), "World");
}

TEST_F(EnvironmentManagerTest, EmptyNameIsAName)
{
    Environment* const environment = find("");

    EXPECT_EQ(find(StringView()), environment);
    EXPECT_EQ(environment->getName(), "");
    EXPECT_NE(find("world"), environment);
}

TEST_F(EnvironmentManagerTest, NamesGoOnBehindANul)
{
    Environment* const environment = find(StringView("a\0b", 3));

    EXPECT_NE(find("a"), environment);
    EXPECT_NE(find(StringView("a\0c", 3)), environment);
    EXPECT_EQ(find(StringView("a\0b", 3)), environment);
    EXPECT_EQ(environment->getName(), StringView("a\0b", 3));
}

TEST_F(EnvironmentManagerTest, NameEndsWithItsViewAndIsCopied)
{
    std::string name = "worldwide";
    Environment* const environment = find(StringView(name.data(), 5));

    name = "other";

    EXPECT_EQ(find("world"), environment);
    EXPECT_EQ(environment->getName(), "world");
}

TEST_F(EnvironmentManagerTest, EnvironmentStaysWhereItIsFiledWhenItsNameChanges)
{
    Environment* const environment = find("world");

    environment->setName("other");

    EXPECT_EQ(find("world"), environment);
    EXPECT_NE(find("other"), environment);
}

TEST_F(EnvironmentManagerTest, EnvironmentsStayInPlaceWhileOthersComeAlong)
{
    Environment* const first = find("0");
    std::set<Environment*> all;

    for (int i = 0; i < 1000; ++i)
        all.insert(find(std::to_string(i)));

    EXPECT_EQ(all.size(), 1000U);
    EXPECT_EQ(find("0"), first);
}

TEST_F(EnvironmentManagerTest, KillEndsEveryEnvironmentOnceAndLeavesNone)
{
    int ended = 0;
    for (const char* name : {"a", "b", "c"})
        declareFarewell(*makeLua(name), [&ended] { ++ended; });
    find("a")->setVar("score", 3);

    killManager();

    EXPECT_EQ(ended, 3);
    EXPECT_EQ(EnvironmentManager::getInstanceIfExisting(), nullptr);
    EXPECT_EQ(makeLua("a")->getVar("score", -1), -1);
}

TEST_F(EnvironmentManagerTest, ManagerAskedForDuringAKillIsDestroyedWithIt)
{
    Environment* const old = makeLua("world");
    Environment* inner = nullptr;
    bool isInnerEnded = false;
    declareFarewell(
        *old,
        [&]
        {
            inner = makeLua("world");
            declareFarewell(*inner, [&isInnerEnded] { isInnerEnded = true; });
        });

    killManager();

    EXPECT_NE(inner, nullptr);
    EXPECT_NE(inner, old);
    EXPECT_TRUE(isInnerEnded);
    EXPECT_EQ(EnvironmentManager::getInstanceIfExisting(), nullptr);
}

TEST_F(EnvironmentManagerTest, KillDuringAKillChangesNothing)
{
    int ended = 0;
    for (const char* name : {"a", "b"})
    {
        declareFarewell(
            *makeLua(name),
            [&ended]
            {
                manager().kill();
                ++ended;
            });
    }

    killManager();

    EXPECT_EQ(ended, 2);
    EXPECT_EQ(EnvironmentManager::getInstanceIfExisting(), nullptr);
}

TEST_F(EnvironmentManagerTest, KillInsideARunningScriptEndsTheOthersAtOnceAndLetsItGoOn)
{
    Environment* const environment = makeLua("world");
    std::string events;
    int found = 0;
    declareFarewell(*environment, [&events] { events += " bindings end."; });
    declareFarewell(*makeLua("other"), [&events] { events += "other ends. "; });
    declare(
        *environment,
        "quit",
        [&]
        {
            killManager();
            events += "killed.";
            found = makeLua("world")->getVar("score", -1);
        });
    declare(*environment, "note", [&events] { events += " script goes on."; });

    EXPECT_TRUE(runScript(
        *environment,
        "score = 3 quit() local list = {} for i = 1, 100 do list[i] = {} end "
        "note()"));

    EXPECT_EQ(events, "other ends. killed. script goes on. bindings end.");
    EXPECT_EQ(found, -1) << "the name is not free while the killed environment still runs";
}

TEST_F(EnvironmentManagerTest, CopySharesTheEnvironmentsSoFarAndIsNotTheInstance)
{
    EnvironmentManager* const instance = EnvironmentManager::getInstance();
    Environment* const before = makeLua("before");

    EnvironmentManager copy(manager());
    Environment* const after = makeLua("after");
    Environment* const afterOfTheCopy = copy.createOrRetrieve("after");
    afterOfTheCopy->setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(copy.createOrRetrieve("before"), before);
    EXPECT_NE(afterOfTheCopy, after);
    EXPECT_EQ(EnvironmentManager::getInstance(), instance);
    killManager();
}

TEST_F(EnvironmentManagerTest, EnvironmentsEndOnceWithTheLastCopy)
{
    int ended = 0;
    declareFarewell(*makeLua("world"), [&ended] { ++ended; });

    {
        EnvironmentManager copy(manager());
        killManager();
        EXPECT_EQ(ended, 0);
        EXPECT_TRUE(runScript(*copy.createOrRetrieve("world"), "farewell()"));
    }

    EXPECT_EQ(ended, 1);
}

TEST_F(EnvironmentManagerTest, AssignmentGivesUpTheOwnEnvironmentsWhichHaveLeftTheManagerBefore)
{
    int ended = 0;
    EnvironmentManager other(manager());
    Environment* const old = makeLua("world");
    Environment* found = nullptr;
    declareFarewell(
        *old,
        [&]
        {
            ++ended;
            found = makeLua("world");
        });
    Environment* const kept = other.createOrRetrieve("kept");
    kept->setEnvironmentFor(INTERPRETER_LUA);

    manager() = other;

    EXPECT_EQ(ended, 1);
    EXPECT_NE(found, nullptr);
    EXPECT_NE(found, old);
    EXPECT_EQ(find("kept"), kept);
    killManager();
}

TEST_F(EnvironmentManagerTest, SelfAssignmentChangesNothing)
{
    Environment* const environment = find("world");
    const EnvironmentManager& same = manager();

    manager() = same;

    EXPECT_EQ(find("world"), environment);
}

} // namespace tbScripts::test
