// The steps in which the last share of an environment goes, seen from the back-end.

#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/Function.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace
{

using Steps = std::vector<std::string>;
using Text = tbMemory::StringView;

// Notes the steps of a teardown; all else is out of the question there.
class RecordingStrategy final : public EnvironmentStrategy
{
public:
    explicit RecordingStrategy(Steps& steps)
        : EnvironmentStrategy(std::make_shared<const tbMemory::String>("world"))
        , m_steps(steps)
    {
    }

    ~RecordingStrategy() override { m_steps.emplace_back("back-end gone"); }

    void beginTeardown() override { m_steps.emplace_back("begun"); }

    void clearGlobals() override { m_steps.emplace_back("globals cleared"); }

    void requestGarbageCollection() override { m_steps.emplace_back("collected"); }

    void shutDown() override { m_steps.emplace_back("closed"); }

    // What a teardown never asks for.
    bool execute(const Script&) override { return false; }

    void setVarObjectReference(const Text&, const ScriptObjectReference&) override {}

    void setVarString(const Text&, const Text&) override {}

    void setVarDouble(const Text&, double) override {}

    void setVarFloat(const Text&, float) override {}

    void setVarInt(const Text&, std::int32_t) override {}

    void setVarBool(const Text&, bool) override {}

    void setObject(const Text&, const Text&, void*) override {}

    bool isVarSet(const Text&) override { return false; }

    ScriptObjectReference getVarObjectReference(const Text&) override { return {}; }

    Text getVarString(const Text&, const Text&) override { return {}; }

    double getVarDouble(const Text&, double) override { return 0; }

    float getVarFloat(const Text&, float) override { return 0; }

    std::int32_t getVarInt(const Text&, std::int32_t) override { return 0; }

    bool getVarBool(const Text&, bool) override { return false; }

    void* getObject(const Text&, const Text&) override { return nullptr; }

    ScriptObjectReference getScriptFunction(const Text&) override { return {}; }

    std::unique_ptr<Function> createFunction(const Text&) override { return nullptr; }

    std::unique_ptr<UserType> createUserType(const Text&) override { return nullptr; }

    std::unique_ptr<Namespace> createNamespace(const Text&) override { return nullptr; }

    bool callScriptFunction(
        const ScriptObjectReference&,
        const tbMemory::BufferView<FunctionParameter>&,
        tbMemory::BufferView<FunctionParameter>&) override
    {
        return false;
    }

    tbMemory::Buffer serializeScriptObject(const ScriptObjectReference&, bool) override
    {
        return {};
    }

    ScriptObjectReference
    deserializeScriptObject(const tbMemory::BufferView<unsigned char>&) override
    {
        return {};
    }

    void installFunction(Function&) override {}

    void installUserType(UserType&) override {}

    void installNamespace(Namespace&) override {}

    bool isRunning() const override { return false; }

    bool isTearingDown() const override { return false; }

    void putOff(std::function<void()>) override {}

private:
    Steps& m_steps;
};

// Notes its end.
class RecordingFunction : public Function
{
public:
    explicit RecordingFunction(Steps& steps)
        : Function("f")
        , m_steps(steps)
    {
    }

    ~RecordingFunction() override { m_steps.emplace_back("function deleted"); }

private:
    Steps& m_steps;
};

} // namespace

class EnvironmentTeardownOrderTest : public ::testing::Test
{
protected:
    EnvironmentTeardownOrderTest()
        : m_strategy(std::make_shared<RecordingStrategy>(m_steps))
        , m_bindings(std::make_shared<EnvironmentBindings>())
    {
        m_bindings->functions.push_back(std::make_unique<RecordingFunction>(m_steps));
        m_bindings->functions.push_back(std::make_unique<RecordingFunction>(m_steps));
    }

    // Gives the shares up as an environment does at its end.
    void release()
    {
        releaseShares(*m_strategy, m_strategy.use_count() == 1, std::move(m_bindings));
        m_strategy.reset();
    }

    Steps m_steps;
    std::shared_ptr<EnvironmentStrategy> m_strategy;
    std::shared_ptr<EnvironmentBindings> m_bindings;
};

TEST_F(EnvironmentTeardownOrderTest, LastSharesGoStepByStep)
{
    release();

    EXPECT_THAT(
        m_steps,
        ElementsAre(
            "begun",
            "function deleted",
            "function deleted",
            "globals cleared",
            "collected",
            "closed",
            "back-end gone"));
}

TEST_F(EnvironmentTeardownOrderTest, SharesOfACopyGoWithoutAStep)
{
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    const std::shared_ptr<EnvironmentBindings> bindings = m_bindings;

    release();

    EXPECT_THAT(m_steps, IsEmpty());
    EXPECT_EQ(bindings->functions.size(), 2U);
}

// A copy went on with another interpreter: it has the bindings, nobody has this interpreter.
TEST_F(EnvironmentTeardownOrderTest, LastShareOfOnlyTheInterpreterClosesIt)
{
    const std::shared_ptr<EnvironmentBindings> bindings = m_bindings;

    release();

    EXPECT_THAT(m_steps, ElementsAre("closed", "back-end gone"));
}

TEST_F(EnvironmentTeardownOrderTest, FunctionsHaveLeftTheListWhenTheyGo)
{
    std::size_t left = 99;
    EnvironmentBindings& bindings = *m_bindings;
    bindings.functions.front()->setFunction(
        [look = std::shared_ptr<void>(nullptr, [&](void*) { left = bindings.functions.size(); })](
            const tbMemory::BufferView<FunctionParameter>&) { return FunctionParameter::VOID; });

    release();

    EXPECT_EQ(left, 0U);
}

} // namespace tbScripts::test
