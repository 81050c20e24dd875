// Namespaces that go, with their environment, their parent or on their own, while an operation of
// theirs is running.

#include "support/CountedObject.h"
#include "support/Farewell.h"
#include "support/NamespaceFixture.h"
#include "support/ReactingLogger.h"
#include "support/RowName.h"

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace tbScripts::test
{

namespace
{

/// What is asked of the namespace "a::b".
enum class OPERATION
{
    FUNCTION,
    USER_TYPE,
    NAMESPACE,
    VARIABLE,
    CLEAR,
    RELEASE
};

/// What runs meanwhile.
enum class TRIGGER
{
    METAMETHOD,
    LOG_RECEIVER,
    CAPTURED_END, // the end of what a callable captured
    FINALISER
};

/// What it does.
enum class ENDING
{
    OF_ENVIRONMENT,
    BY_RELEASE,
    BY_RELEASE_OF_PARENT,
    BY_CLEAR,
    BY_CLEAR_OF_PARENT
};

using Case = std::tuple<OPERATION, TRIGGER, ENDING>;

bool isPossible(OPERATION operation, TRIGGER trigger)
{
    if (trigger == TRIGGER::METAMETHOD)
        return operation != OPERATION::CLEAR;
    return trigger != TRIGGER::CAPTURED_END ||
           (operation != OPERATION::NAMESPACE && operation != OPERATION::VARIABLE);
}

std::vector<Case> allCases()
{
    std::vector<Case> cases;
    for (const OPERATION operation :
         {OPERATION::FUNCTION,
          OPERATION::USER_TYPE,
          OPERATION::NAMESPACE,
          OPERATION::VARIABLE,
          OPERATION::CLEAR,
          OPERATION::RELEASE})
    {
        for (const TRIGGER trigger :
             {TRIGGER::METAMETHOD,
              TRIGGER::LOG_RECEIVER,
              TRIGGER::CAPTURED_END,
              TRIGGER::FINALISER})
        {
            if (!isPossible(operation, trigger))
                continue;
            for (const ENDING ending :
                 {ENDING::OF_ENVIRONMENT,
                  ENDING::BY_RELEASE,
                  ENDING::BY_RELEASE_OF_PARENT,
                  ENDING::BY_CLEAR,
                  ENDING::BY_CLEAR_OF_PARENT})
                cases.emplace_back(operation, trigger, ending);
        }
    }
    return cases;
}

std::string nameOf(const Case& row)
{
    const std::vector<std::string> operations{
        "SetFunction", "SetUserType", "SetNamespace", "SetVar", "Clear", "Release"};
    const std::vector<std::string> triggers{
        "Metamethod", "LogReceiver", "CapturedEnd", "Finaliser"};
    const std::vector<std::string> endings{
        "DestroysEnvironment", "Releases", "ReleasesParent", "Clears", "ClearsParent"};
    return operations.at(static_cast<std::size_t>(std::get<0>(row))) + "While" +
           triggers.at(static_cast<std::size_t>(std::get<1>(row))) +
           endings.at(static_cast<std::size_t>(std::get<2>(row)));
}

// Looks at what was declared, so that a pointer to something freed shows.
template <typename T>
std::string use(T* declared)
{
    return declared ? std::string(std::string_view(declared->getName())) : "null";
}

} // namespace

class NamespaceEndFixture : public NamespaceFixture
{
protected:
    NamespaceEndFixture()
        : m_inner(scope().setNamespace("b"))
    {
        declareAction("act", [this] { end(); });
        m_inner->setFunction("f");
        m_inner->setNamespace("n");
        makeCounted(m_inner->setUserType("T"));
        run("kept = a.b.T.new()");
    }

    // Performs the ending, once.
    void end()
    {
        if (m_hasEnded)
            return;
        m_hasEnded = true;
        switch (m_ending)
        {
        case ENDING::OF_ENVIRONMENT:
            destroyEnvironment();
            break;
        case ENDING::BY_RELEASE:
            m_inner->release();
            break;
        case ENDING::BY_RELEASE_OF_PARENT:
            scope().release();
            break;
        case ENDING::BY_CLEAR:
            m_inner->clear();
            break;
        case ENDING::BY_CLEAR_OF_PARENT:
            scope().clear();
            break;
        }
    }

    // Has functions and methods of the inner namespace do the ending when they go.
    void endByCaptures()
    {
        bindHolding(m_inner->setFunction("f"), makeFarewell([this] { end(); }));
        bindHolding(
            m_inner->getUserType("T")->setMethod("m", false), makeFarewell([this] { end(); }));
        forgetLog();
    }

    Namespace* m_inner; // good until it has ended
    ENDING m_ending = ENDING::OF_ENVIRONMENT;
    bool m_hasEnded = false;
};

class NamespaceEndTest : public OnValues<NamespaceEndFixture, Case>
{
protected:
    NamespaceEndTest()
        : m_operation(std::get<0>(GetParam()))
        , m_trigger(std::get<1>(GetParam()))
    {
        m_ending = std::get<2>(GetParam());
        if (m_trigger == TRIGGER::METAMETHOD)
            run("local rawset, act = rawset, act setmetatable(a.b, "
                "{__newindex = function(t, k, v) rawset(t, k, v) act() end})");
        if (m_trigger == TRIGGER::CAPTURED_END)
            endByCaptures();
        if (m_trigger == TRIGGER::FINALISER)
            prepareFinaliser();
        if (m_trigger == TRIGGER::LOG_RECEIVER)
            prepareMessage();
    }

    void TearDown() override
    {
        destroyEnvironment();
        forgetLog(); // of what was done on the way
        NamespaceEndFixture::TearDown();
    }

    bool collects() const
    {
        return m_operation == OPERATION::CLEAR || m_operation == OPERATION::RELEASE;
    }

    void prepareFinaliser()
    {
        if (collects())
            run("a.b.value = newproxy(true) getmetatable(a.b.value).__gc = act");
        else
            run("local rawset, collectgarbage = rawset, collectgarbage setmetatable(a.b, "
                "{__newindex = function(t, k, v) rawset(t, k, v) collectgarbage() end}) "
                "getmetatable(newproxy(true)).__gc = act");
    }

    void prepareMessage()
    {
        if (collects())
            run("a.b.value = newproxy(true) "
                "getmetatable(a.b.value).__gc = function() error('logged', 0) end");
        if (m_operation == OPERATION::VARIABLE)
            run("setmetatable(a.b, {__newindex = function() error('logged', 0) end})");
    }

    // Performs the operation and returns the name of what it gives, "null" if that is nothing.
    std::string perform()
    {
        std::unique_ptr<ReactingLogger> receiver;
        if (m_trigger == TRIGGER::LOG_RECEIVER)
            receiver = std::make_unique<ReactingLogger>([this] { end(); });
        const bool isRepeated =
            m_trigger == TRIGGER::LOG_RECEIVER || m_trigger == TRIGGER::CAPTURED_END;
        switch (m_operation)
        {
        case OPERATION::FUNCTION:
            return use(m_inner->setFunction(isRepeated ? "f" : "new"));
        case OPERATION::USER_TYPE:
            return use(m_inner->setUserType(isRepeated ? "T" : "new"));
        case OPERATION::NAMESPACE:
            return use(m_inner->setNamespace(isRepeated ? "n" : "new"));
        case OPERATION::VARIABLE:
            m_inner->setVar("v", 5);
            break;
        case OPERATION::CLEAR:
            m_inner->clear();
            break;
        case OPERATION::RELEASE:
            m_inner->release();
            break;
        }
        return "null";
    }

    OPERATION m_operation;
    TRIGGER m_trigger;
};

INSTANTIATE_TEST_SUITE_P(
    Cases,
    NamespaceEndTest,
    ::testing::ValuesIn(allCases()),
    [](const ::testing::TestParamInfo<Case>& row) { return nameOf(row.param); });

TEST_P(NamespaceEndTest, GivesNothingThatIsGone)
{
    const std::string given = perform();
    EXPECT_TRUE(m_hasEnded);
    if (m_ending == ENDING::OF_ENVIRONMENT || m_ending == ENDING::BY_RELEASE_OF_PARENT)
    {
        EXPECT_EQ(given, "null");
    }
}

TEST_P(NamespaceEndTest, DestroysInstancesOnce)
{
    perform();
    destroyEnvironment();
    EXPECT_EQ(CountedObject::getLiving(), 0);
    EXPECT_EQ(CountedObject::getMade(), 1);
}

TEST_P(NamespaceEndTest, MayComeFromInsideAScript)
{
    declareAction("operate", [this] { perform(); });
    runScript(environment(), "operate()");
    EXPECT_TRUE(m_hasEnded);
}

TEST_P(NamespaceEndTest, MayComeFromInsideAFunctionOfTheNamespace)
{
    bool isIntact = false;
    Function* const function = m_inner->setFunction("g");
    if (!function) // the metamethod has ended it already
        return;
    function->setFunction(
        [this, &isIntact, text = std::string("captured text of some length")](const Parameters&)
        {
            perform();
            end();
            isIntact = text == "captured text of some length";
            return FunctionParameter(text);
        });

    runScript(environment(), "assert(a.b.g() == 'captured text of some length')");

    EXPECT_TRUE(isIntact || m_trigger == TRIGGER::METAMETHOD || m_trigger == TRIGGER::FINALISER);
}

} // namespace tbScripts::test
