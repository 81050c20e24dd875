// The steps in which the last share of an environment goes, seen from the back-end.

#include "environments/EnvironmentBindings.h"
#include "environments/EnvironmentStrategy.h"

#include "tbScripts/Function.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

#include <gmock/gmock.h>

#include <functional>
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
using Reference = ScriptObjectReference;
using Parameters = tbMemory::BufferView<FunctionParameter>;
using Bytes = tbMemory::BufferView<unsigned char>;

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
    MOCK_METHOD(bool, execute, (const Script&), (override));
    MOCK_METHOD(void, setVarObjectReference, (const Text&, const Reference&), (override));
    MOCK_METHOD(void, setVarString, (const Text&, const Text&), (override));
    MOCK_METHOD(void, setVarDouble, (const Text&, double), (override));
    MOCK_METHOD(void, setVarFloat, (const Text&, float), (override));
    MOCK_METHOD(void, setVarInt, (const Text&, std::int32_t), (override));
    MOCK_METHOD(void, setVarBool, (const Text&, bool), (override));
    MOCK_METHOD(void, setObject, (const Text&, const Text&, void*), (override));
    MOCK_METHOD(bool, isVarSet, (const Text&), (override));
    MOCK_METHOD(Reference, getVarObjectReference, (const Text&), (override));
    MOCK_METHOD(Text, getVarString, (const Text&, const Text&), (override));
    MOCK_METHOD(double, getVarDouble, (const Text&, double), (override));
    MOCK_METHOD(float, getVarFloat, (const Text&, float), (override));
    MOCK_METHOD(std::int32_t, getVarInt, (const Text&, std::int32_t), (override));
    MOCK_METHOD(bool, getVarBool, (const Text&, bool), (override));
    MOCK_METHOD(void*, getObject, (const Text&, const Text&), (override));
    MOCK_METHOD(Reference, getScriptFunction, (const Text&), (override));
    MOCK_METHOD(std::unique_ptr<Function>, createFunction, (const Text&), (override));
    MOCK_METHOD(std::unique_ptr<UserType>, createUserType, (const Text&), (override));
    MOCK_METHOD(std::unique_ptr<Namespace>, createNamespace, (const Text&), (override));
    MOCK_METHOD(
        bool, callScriptFunction, (const Reference&, const Parameters&, Parameters&), (override));
    MOCK_METHOD(tbMemory::Buffer, serializeScriptObject, (const Reference&, bool), (override));
    MOCK_METHOD(Reference, deserializeScriptObject, (const Bytes&), (override));
    MOCK_METHOD(void, installFunction, (Function&), (override));
    MOCK_METHOD(void, installUserType, (UserType&), (override));
    MOCK_METHOD(void, installNamespace, (Namespace&), (override));
    MOCK_METHOD(bool, isRunning, (), (const, override));
    MOCK_METHOD(bool, isTearingDown, (), (const, override));
    MOCK_METHOD(void, defer, (std::function<void()>), (override));

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

// Notes its clearing and its end.
class RecordingUserType : public UserType
{
public:
    explicit RecordingUserType(Steps& steps)
        : UserType("T")
        , m_steps(steps)
    {
    }

    ~RecordingUserType() override { m_steps.emplace_back("user type deleted"); }

    void clear() override
    {
        m_steps.emplace_back("user type cleared");
        if (m_onClear)
            m_onClear();
    }

    MOCK_METHOD(Function*, getMethod, (const Text&), (const, override));
    MOCK_METHOD(Function*, getStaticMethod, (const Text&), (const, override));
    MOCK_METHOD(void, setConstructor, (Constructor), (override));
    MOCK_METHOD(void, setDestructor, (Destructor), (override));
    MOCK_METHOD(Function*, setMethod, (const Text&, bool), (override));
    MOCK_METHOD(Function*, setStaticMethod, (const Text&), (override));
    MOCK_METHOD(Function*, setOperator, (BUILT_IN_FUNCTION), (override));
    MOCK_METHOD(void, setField, (UserTypeFieldDescriptor), (override));
    MOCK_METHOD(void, setArrayAccess, (UserTypeArrayDescriptor), (override));

    std::function<void()> m_onClear;

private:
    Steps& m_steps;
};

// Notes its release and its end.
class RecordingNamespace : public Namespace
{
public:
    explicit RecordingNamespace(Steps& steps)
        : Namespace("n")
        , m_steps(steps)
    {
    }

    ~RecordingNamespace() override { m_steps.emplace_back("namespace deleted"); }

    void release() override { m_steps.emplace_back("namespace released"); }

    void clear() override { m_steps.emplace_back("namespace cleared"); }

    MOCK_METHOD(Namespace*, getNamespace, (const Text&), (const, override));
    MOCK_METHOD(UserType*, getUserType, (const Text&), (const, override));
    MOCK_METHOD(void, setVar, (const Text&, const Reference&), (override));
    MOCK_METHOD(void, setVar, (const Text&, const Text&), (override));
    MOCK_METHOD(void, setVar, (const Text&, double), (override));
    MOCK_METHOD(void, setVar, (const Text&, float), (override));
    MOCK_METHOD(void, setVar, (const Text&, int), (override));
    MOCK_METHOD(void, setVar, (const Text&, bool), (override));
    MOCK_METHOD(void, setVar, (const Text&, const Text&, void*), (override));
    MOCK_METHOD(Namespace*, setNamespace, (const Text&), (override));
    MOCK_METHOD(UserType*, setUserType, (const Text&), (override));
    MOCK_METHOD(Function*, setFunction, (const Text&), (override));

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

    // Adds two user types and two namespaces.
    void addTypesAndNamespaces()
    {
        for (int i = 0; i < 2; ++i)
        {
            m_bindings->userTypes.push_back(std::make_unique<RecordingUserType>(m_steps));
            m_bindings->namespaces.push_back(std::make_unique<RecordingNamespace>(m_steps));
        }
    }

    // Gives the shares up as an environment does at its end.
    void release()
    {
        releaseShares(*m_strategy, std::move(m_bindings));
        m_strategy.reset();
    }

    Steps m_steps;
    std::shared_ptr<EnvironmentStrategy> m_strategy;
    std::shared_ptr<EnvironmentBindings> m_bindings;
};

TEST_F(EnvironmentTeardownOrderTest, NamespacesAndUserTypesHaveTheirSteps)
{
    addTypesAndNamespaces();

    release();

    EXPECT_THAT(
        m_steps,
        ElementsAre(
            "begun",
            "function deleted",
            "function deleted",
            "globals cleared",
            "namespace released",
            "namespace released",
            "user type cleared",
            "user type cleared",
            "collected",
            "namespace deleted",
            "namespace deleted",
            "user type deleted",
            "user type deleted",
            "closed",
            "back-end gone"));
}

TEST_F(EnvironmentTeardownOrderTest, NamespacesAndUserTypesOfACopyStay)
{
    addTypesAndNamespaces();
    const std::shared_ptr<EnvironmentBindings> bindings = m_bindings;

    release();

    EXPECT_THAT(m_steps, ElementsAre("closed", "back-end gone"));
    EXPECT_EQ(bindings->userTypes.size(), 2U);
    EXPECT_EQ(bindings->namespaces.size(), 2U);
}

TEST_F(EnvironmentTeardownOrderTest, TypesAreStillListedWhileTheyAreCleared)
{
    addTypesAndNamespaces();
    std::size_t listed = 99;
    EnvironmentBindings& bindings = *m_bindings;
    static_cast<RecordingUserType&>(*bindings.userTypes.front()).m_onClear = [&]
    { listed = bindings.userTypes.size(); };

    release();

    EXPECT_EQ(listed, 2U);
}

TEST_F(EnvironmentTeardownOrderTest, SharesOfACopyGoWithoutAStep)
{
    const std::shared_ptr<EnvironmentStrategy> strategy = m_strategy;
    const std::shared_ptr<EnvironmentBindings> bindings = m_bindings;
    strategy->addUser(); // the copy

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
