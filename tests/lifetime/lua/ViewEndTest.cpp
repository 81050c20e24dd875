// Views look at the interpreter's stack and end with the call that lent them.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "environments/lua/LuaEnvironmentStrategy.h"
#include "support/EnvironmentFixture.h"
#include "support/InterpreterCalls.h"
#include "support/TypeTable.h"

#include <tbScripts/Script.h>
#include <tbScripts/ScriptObjectInterpreterReference.h>
#include <tbScripts/ScriptObjectInterpreterView.h>
#include <tbScripts/ScriptObjectView.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

class ViewEndTest : public LogFixture
{
protected:
    ViewEndTest()
        : m_strategy(std::make_unique<lua::LuaEnvironmentStrategy>(
              std::make_shared<tbMemory::String>("world")))
    {
        const lua::LuaStateHandle& handle = m_strategy->getHandle();
        publishTypeTable(*handle.getSlot(), handle.get(), "Type");
        m_strategy->setObject("thing", "Type", &m_object);
    }

    // Declares `take`, which gets an instance as a value that the script owns.
    void declareTake(Function::Callable callable)
    {
        m_take = m_strategy->createFunction("take");
        m_take->addParameter(PARAM_TYPE_USER_TYPE_OWNED, "Type");
        m_take->setFunction(std::move(callable));
    }

    bool run(const std::string& sources)
    {
        Script script;
        script.setTargetInterpreter(INTERPRETER_LUA);
        script.setSources(sources);
        return script.load() && m_strategy->execute(script);
    }

    static bool isEmpty(const ScriptObjectView& view)
    {
        return ScriptObjectReference(view).getInterpreterReference() == nullptr;
    }

    StateMemory m_memory;
    int m_object = 0;
    std::unique_ptr<lua::LuaEnvironmentStrategy> m_strategy;
    std::unique_ptr<Function> m_take;
    ScriptObjectView m_view;
};

TEST_F(ViewEndTest, ViewStaysGoodOverOtherCallsInside)
{
    declareTake(doing(
        [&](const Parameters& parameters)
        {
            EXPECT_TRUE(run("local a, b, c, d = 1, 2, 3, 4 collectgarbage()"));
            m_strategy->setVarInt("number", 12);
            const ScriptObjectReference kept(parameters[0].getUserTypeView());
            m_strategy->setVarObjectReference("kept", kept);
        }));

    EXPECT_TRUE(run("take(thing) assert(kept == thing)"));
}

TEST_F(ViewEndTest, ViewOutlivesTheStateWithoutTouchingIt)
{
    declareTake(
        [&](const Parameters& parameters)
        {
            m_view = parameters[0].getUserTypeView();
            run("return 1"); // has the value kept in the registry
            return FunctionParameter::VOID;
        });
    EXPECT_TRUE(run("take(thing)"));

    m_take.reset();
    m_strategy.reset();

    EXPECT_TRUE(isEmpty(m_view));
}

TEST_F(ViewEndTest, CallInsideFailsIfTheViewCannotBeKept)
{
    std::size_t refusals = 0;
    declareTake(doing(
        [&]
        {
            m_memory.refuseAfter(0);
            m_strategy->isVarSet("thing");
            m_memory.allowAll();
            refusals += m_memory.hasRefused() ? 1 : 0;
        }));
    // Fills the registry, so that a further value makes it grow.
    std::vector<ScriptObjectReference> fill;
    for (int i = 0; i < 300; ++i)
    {
        fill.push_back(m_strategy->getVarObjectReference("thing"));
        EXPECT_TRUE(run("take(thing)"));
    }

    const std::vector<LogEntry> entries = m_log.takeEntries();
    EXPECT_GT(refusals, 0U);
    EXPECT_EQ(entries.size(), refusals);
    EXPECT_EQ(entries.at(0), (LogEntry{"not enough memory", "LuaEnvironment"}));
}

} // namespace tbScripts::test
