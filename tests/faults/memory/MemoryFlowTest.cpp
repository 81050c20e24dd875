// For n = 0, 1, 2, ... until nothing is refused any more: `operator new` refuses the n-th request
// of a piece of a host's work, or it and all that follow. The work comes out as it does with
// memory, or has its neutral outcome, or throws `std::bad_alloc`; the environment goes on, and in
// the end nothing is left over.

#include "faults/memory/MemoryFlow.h"

#include <tbResources/ResourceManager.h>
#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ProjectLoader.h>
#include <tbScripts/ScriptManager.h>

#include <new>
#include <string_view>

namespace tbScripts::test
{

namespace
{

constexpr const char* PRELUDE = R"(
    things = {1, 2.5, {a_name_of_some_length = 'a text that needs memory of its own'}}
    things.thing = Thing.new()
    function call_the_host(text, list)
        return report_to_the_host(text .. ', and some more', list, Thing.new())
    end
)";

constexpr const char* SOURCES = R"(
    local answer = call_the_host('a text that needs memory of its own', {})
    local thing = Thing.new()
)";

constexpr const char* DOCUMENT = R"({"scripts": [
    {"name": "a script that has a long name", "type": "lua", "sources": "x = 'some more text'"},
    {"name": "another script that has a long name", "type": "lua", "sources": "x ="}]})";

int livingObjects = 0;

struct Thing
{
    Thing() { ++livingObjects; }

    Thing(const Thing&) = delete;
    Thing& operator=(const Thing&) = delete;

    ~Thing() { --livingObjects; }
};

template <typename Manager>
void killIfThere()
{
    if (Manager* const manager = Manager::getInstanceIfExisting())
        manager->kill();
}

// An environment that has lost its interpreter gets another.
void expectToGoOn(FlowWorld& world)
{
    if (!world.environment)
        return;
    if (!world.environment->isVarSet("print"))
        world.environment->setEnvironmentFor(INTERPRETER_LUA);
    EXPECT_TRUE(runIn(*world.environment, "goes_on = 7"));
    EXPECT_EQ(world.environment->getVar("goes_on", 0), 7);
}

} // namespace

bool runIn(Environment& environment, const char* sources)
{
    Script script;
    script.setName("a script whose name needs memory of its own");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    return script.load() && environment.execute(script);
}

FlowWorld::FlowWorld()
    : environment(std::make_unique<Environment>())
{
    environment->setName("a world whose name needs memory of its own");
    environment->setEnvironmentFor(INTERPRETER_LUA);
    makeCounted(*environment->setUserType("Thing"));
    environment->setNamespace("a_namespace_with_a_long_name::one_inside_with_a_long_name");
    environment->setFunc("report_to_the_host");
    report().addParameter(PARAM_TYPE_STRING);
    report().addParameter(PARAM_TYPE_SCRIPT_OBJECT);
    report().addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Thing");
    report().setFunction(
        [this](const Parameters& parameters)
        {
            const ScriptObjectReference list = parameters[1].getScriptObject();
            environment->setVar("reported", parameters[0].getString());
            environment->setVar("list", list);
            return FunctionParameter("an answer that needs memory of its own");
        });
    runIn(*environment, PRELUDE);
    table = environment->getVar("things");
    call = environment->getScriptFunction("call_the_host");
    script.setName("a script that calls the host in various ways");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(SOURCES);
    script.load();
    bytes = environment->serializeScriptObject(table, false);
}

FlowWorld::~FlowWorld()
{
    // Bytes that own objects give them back, so that they are destroyed.
    if (environment && owningBytes.size() > 0)
        environment->deserializeScriptObject(owningBytes);
}

void FlowWorld::makeCounted(UserType& type)
{
    type.setConstructor([](const Parameters&) { return new Thing; });
    type.setDestructor([](void* object) { delete static_cast<Thing*>(object); });
}

int FlowWorld::countLivingObjects()
{
    return livingObjects;
}

Function& FlowWorld::report()
{
    return *environment->getFunc("report_to_the_host");
}

void MemoryFlowTest::Receiver::log(
    const tbLog::StringView& /*message*/, const tbLog::StringView& /*source*/)
{
}

MemoryFlowTest::MemoryFlowTest()
    : m_workingPath(tbResources::ResourceManager::getInstance()->getWorkingPath())
{
    tbResources::ResourceManager::getInstance()->setWorkingPath(m_folder.pathOf(""));
    m_folder.write("a_project_with_a_long_name_scripts.tbscripts", DOCUMENT);
    LogManager::getInstance()->setReceiver(&m_receiver);
    performWith(1000000); // what is made once only is no leak
    m_leaked = 0;
}

MemoryFlowTest::~MemoryFlowTest()
{
    tbResources::ResourceManager::getInstance()->setWorkingPath(m_workingPath);
    killIfThere<LogManager>();
}

bool MemoryFlowTest::performWith(std::size_t allowed)
{
    const auto& [flow, span] = GetParam();
    const std::size_t blocksBefore = RefusedMemory::countLivingBlocks();
    bool isRefused = false;
    m_isDone = false;
    {
        FlowWorld world;
        {
            const RefusedMemory memory(allowed, span);
            try
            {
                m_isDone = flow.perform(world);
            }
            catch (const std::bad_alloc&)
            {
                // One of the outcomes.
            }
            isRefused = memory.hasRefused();
        }
        LogManager::getInstance()->setReceiver(&m_receiver); // flows may kill it
        expectToGoOn(world);
    }
    killIfThere<EnvironmentManager>();
    killIfThere<ScriptManager>();
    m_leaked += RefusedMemory::countLivingBlocks() - blocksBefore;
    m_undestroyedObjects = FlowWorld::countLivingObjects();
    return isRefused;
}

void MemoryFlowTest::performUntilDone()
{
    for (m_refusals = 0; performWith(m_refusals) && !HasFailure(); ++m_refusals)
    {
    }
}

std::string nameOfFlow(const ::testing::TestParamInfo<MemoryFlowRow>& row)
{
    const bool isOne = std::get<1>(row.param) == RefusedMemory::SPAN::ONE_REQUEST;
    return std::string(std::get<0>(row.param).name) +
           (isOne ? "WithoutOneRequest" : "WithoutAllFurtherRequests");
}

TEST_P(MemoryFlowTest, IsDoneOrNeutralOrThrowsAndLeavesNothingBehind)
{
    performUntilDone();

    EXPECT_TRUE(m_isDone);
    EXPECT_GT(m_refusals, 0U);
    EXPECT_EQ(m_leaked, 0U);
    EXPECT_EQ(m_undestroyedObjects, 0);
}

} // namespace tbScripts::test
