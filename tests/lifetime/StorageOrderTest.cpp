// Environments and what refers to them die in every order: as members, as captures, in static
// storage before `main` and after it.

#include "support/EnvironmentFixture.h"

#include <tbScripts/LogManager.h>
#include <tbScripts/Script.h>

#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace tbScripts::test
{

namespace
{

constexpr int PASSED = 0;

// Made before `main`, from something of the library that must be there already.
const FunctionParameter MADE_BEFORE_MAIN(FunctionParameter::VOID);
const ScriptObjectReference REFERENCE_BEFORE_MAIN;
const Environment ENVIRONMENT_BEFORE_MAIN;

void fill(Environment& environment)
{
    environment.setEnvironmentFor(INTERPRETER_LUA);
    runScript(environment, "list = {} function give() return list end");
    environment.setFunc("answer")->setFunction(returning(42));
}

struct ReferencesLast
{
    Environment environment;
    ScriptObjectReference list;
    FunctionParameter give;
    std::vector<ScriptObjectReference> more;
};

struct ReferencesFirst
{
    std::vector<ScriptObjectReference> more;
    FunctionParameter give;
    ScriptObjectReference list;
    Environment environment;
};

template <typename Members>
void fillMembers(Members& members)
{
    fill(members.environment);
    members.list = members.environment.getVar("list");
    members.give = FunctionParameter(members.environment.getScriptFunction("give"));
    members.more.assign(10, members.list);
}

// Ends a child process as `main` does, so that objects in static storage are destroyed.
[[noreturn]] void endProcess()
{
    std::exit(PASSED);
}

} // namespace

template <typename Members>
using MemberOrderTest = LogFixture;

using Orders = ::testing::Types<ReferencesLast, ReferencesFirst>;

class OrderNames
{
public:
    template <typename Members>
    static std::string GetName(int)
    {
        return std::is_same_v<Members, ReferencesLast> ? "ReferencesLast" : "ReferencesFirst";
    }
};

TYPED_TEST_SUITE(MemberOrderTest, Orders, OrderNames);

TYPED_TEST(MemberOrderTest, MembersDieInTheirOrder)
{
    auto members = std::make_unique<TypeParam>();
    fillMembers(*members);
    members.reset();
    EXPECT_THAT(this->m_log.takeEntries(), ::testing::IsEmpty());
}

TYPED_TEST(MemberOrderTest, MembersDieInTheirOrderAfterASwitch)
{
    auto members = std::make_unique<TypeParam>();
    fillMembers(*members);
    members->environment.setEnvironmentFor(INTERPRETER_LUA);
    members.reset();
    EXPECT_THAT(this->m_log.takeEntries(), ::testing::IsEmpty());
}

TYPED_TEST(MemberOrderTest, MembersAreAssignedInTheirOrder)
{
    TypeParam members;
    fillMembers(members);
    TypeParam others;
    fillMembers(others);

    members = others;

    EXPECT_EQ(members.environment.getVar("answer", 1), 1);
    EXPECT_TRUE(members.environment.isVarSet("list"));
}

TYPED_TEST(MemberOrderTest, ObjectsInStaticStorageDieInTheirOrder)
{
    EXPECT_EXIT(
        {
            static TypeParam members;
            fillMembers(members);
            LogManager::getInstance()->kill();
            endProcess();
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

using StorageOrderTest = EnvironmentFixture;

TEST_F(StorageOrderTest, VoidIsThereBeforeMain)
{
    EXPECT_EQ(MADE_BEFORE_MAIN.getType(), PARAM_TYPE_VOID);
}

TEST_F(StorageOrderTest, ReferencesAndEnvironmentsCanBeMadeBeforeMain)
{
    EXPECT_EQ(REFERENCE_BEFORE_MAIN.getUseCount(), 1U);
    EXPECT_TRUE(ENVIRONMENT_BEFORE_MAIN.getName().empty());
}

TEST_F(StorageOrderTest, CallableMayHoldItsOwnEnvironmentsValues)
{
    fill(environment());
    const ScriptObjectReference list = environment().getVar("list");
    environment().getFunc("answer")->setFunction([list](const Parameters&)
                                                 { return FunctionParameter(list); });
    run("assert(answer() == list)");

    destroyEnvironment();

    EXPECT_EQ(list.getUseCount(), 1U);
}

TEST_F(StorageOrderTest, CallableMayHoldACopyOfItsEnvironment)
{
    auto copy = std::make_shared<Environment>(environment());
    environment().setFunc("answer")->setFunction([copy](const Parameters&)
                                                 { return FunctionParameter(42); });
    copy->setVar("known", 1);

    copy.reset(); // the callable still has it
    environment().getFunc("answer")->reset();

    EXPECT_EQ(environment().getVar("known", 0), 1);
}

TEST_F(StorageOrderTest, OldReferencesDieInAnyOrderAfterAReload)
{
    std::vector<ScriptObjectReference> references;
    for (int round = 0; round < 4; ++round)
    {
        run("list = {} function give() end");
        for (int i = 0; i < 3; ++i)
        {
            references.push_back(environment().getVar("list"));
            references.push_back(environment().getScriptFunction("give"));
        }
        restart();
    }

    for (std::size_t i = 0; i < references.size(); ++i)
        references[(i * 7) % references.size()] = ScriptObjectReference();

    for (const ScriptObjectReference& reference : references)
        EXPECT_EQ(reference.getInterpreterReference(), nullptr);
}

TEST_F(StorageOrderTest, LogManagerMayBeKilledBeforeTheEnvironment)
{
    EXPECT_EXIT(
        {
            static Environment last;
            fill(last);
            runScript(last, "setmetatable(_G, {__newindex = error}) answer = nil");
            runScript(last, "rawset(_G, 'answer', nil)");
            LogManager::getInstance()->kill();
            endProcess(); // the end of `last` has something to log
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

TEST_F(StorageOrderTest, ScriptsInStaticStorageOutliveNothing)
{
    EXPECT_EXIT(
        {
            static Script script;
            static Environment last;
            last.setEnvironmentFor(INTERPRETER_LUA);
            script.setTargetInterpreter(INTERPRETER_LUA);
            script.setSources("return 1");
            script.load();
            last.execute(script);
            endProcess();
        },
        ::testing::ExitedWithCode(PASSED),
        "");
}

} // namespace tbScripts::test
