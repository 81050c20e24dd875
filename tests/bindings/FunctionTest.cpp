#include "support/RowName.h"
#include "support/Steps.h"

#include <tbScripts/LogManager.h>

#include <memory>
#include <utility>

namespace tbScripts::test
{

namespace
{

// Counts how often it was copied.
struct CopyCountingCallable
{
    explicit CopyCountingCallable(int& copies)
        : m_copies(copies)
    {
    }

    CopyCountingCallable(const CopyCountingCallable& other)
        : m_copies(other.m_copies)
    {
        ++m_copies;
    }

    CopyCountingCallable(CopyCountingCallable&&) noexcept = default;
    ~CopyCountingCallable() = default;
    CopyCountingCallable& operator=(const CopyCountingCallable&) = delete;
    CopyCountingCallable& operator=(CopyCountingCallable&&) = delete;

    FunctionParameter operator()(const Parameters&) const { return FunctionParameter::VOID; }

private:
    int& m_copies;
};

class DerivedFunction final : public Function
{
public:
    explicit DerivedFunction(bool& isDestroyed)
        : Function("derived")
        , m_isDestroyed(isDestroyed)
    {
    }

    DerivedFunction(const DerivedFunction&) = delete;
    DerivedFunction& operator=(const DerivedFunction&) = delete;

    ~DerivedFunction() override { m_isDestroyed = true; }

private:
    bool& m_isDestroyed;
};

const LogEntry UNBOUND{
    "Function 'spawn' called but no user function is bound. Call having no effect.", "Function"};

class FunctionTest : public EnvironmentFixture
{
protected:
    // Returns a callable that keeps the token alive as long as it lives.
    Function::Callable holding()
    {
        return doing([token = m_token] {});
    }

    std::shared_ptr<int> m_token = std::make_shared<int>(1);
    Function m_function{"spawn"}; // no script sees it
};

TEST_F(FunctionTest, KeepsACopyOfItsName)
{
    std::string name = "spawn";
    const Function function(name);
    name = "other";
    EXPECT_EQ(function.getName(), "spawn");
}

TEST_F(FunctionTest, NameKeepsAllItsBytes)
{
    const Function function(tbMemory::StringView("sp\0awn", 6));
    EXPECT_EQ(function.getName(), std::string("sp\0awn", 6));
}

TEST_F(FunctionTest, NullNameIsTheEmptyName)
{
    const Function function((tbMemory::StringView()));
    EXPECT_EQ(function.getName(), "");
}

TEST_F(FunctionTest, DestructorIsVirtual)
{
    bool isDestroyed = false;
    std::unique_ptr<Function> function = std::make_unique<DerivedFunction>(isDestroyed);
    function.reset();
    EXPECT_TRUE(isDestroyed);
}

TEST_F(FunctionTest, CallableIsDestroyedWithIt)
{
    auto function = std::make_unique<Function>("spawn");
    function->setFunction(holding());
    ASSERT_EQ(m_token.use_count(), 2);
    function.reset();
    EXPECT_EQ(m_token.use_count(), 1);
}

TEST_F(FunctionTest, DefaultFunctionLogsAndReturnsNoResult)
{
    EXPECT_EQ(m_function.defaultFunction({FunctionParameter(7)}).getType(), 0U);
    expectLogged({UNBOUND});
}

TEST_F(FunctionTest, DefaultFunctionMakesTheLogManagerIfThereIsNone)
{
    LogManager::getInstance()->kill();
    ASSERT_EQ(LogManager::getInstanceIfExisting(), nullptr);
    m_function.defaultFunction(Parameters());
    EXPECT_NE(LogManager::getInstanceIfExisting(), nullptr);
}

TEST_F(FunctionTest, SetFunctionDestroysTheEarlierCallable)
{
    m_function.setFunction(holding());
    m_function.setFunction(returning(1));
    EXPECT_EQ(m_token.use_count(), 1);
}

TEST_F(FunctionTest, SetFunctionTakesACallableThatIsMovedInWithoutCopyingIt)
{
    int copies = 0;
    Function::Callable callable = CopyCountingCallable(copies);
    copies = 0;
    m_function.setFunction(std::move(callable));
    EXPECT_EQ(copies, 0);
}

TEST_F(FunctionTest, CallDoesNotCopyTheCallable)
{
    int copies = 0;
    environment().setFunc("spawn")->setFunction(CopyCountingCallable(copies));
    copies = 0;
    run("spawn()");
    EXPECT_EQ(copies, 0);
}

TEST_F(FunctionTest, ResetForgetsTheParameters)
{
    std::vector<std::string> calls;
    Function* const function =
        declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_STRING}, recording(calls));
    function->reset();
    function->setFunction(recording(calls));
    run("spawn(1, 'x')");
    EXPECT_THAT(calls, ::testing::ElementsAre(""));
}

TEST_F(FunctionTest, ResetDestroysTheCallableAndKeepsTheName)
{
    m_function.setFunction(holding());
    m_function.reset();
    EXPECT_EQ(m_token.use_count(), 1);
    EXPECT_EQ(m_function.getName(), "spawn");
}

TEST_F(FunctionTest, NewOneHasNoParameters)
{
    std::vector<std::string> calls;
    environment().setFunc("spawn")->setFunction(recording(calls));
    run("spawn(1, 2)");
    EXPECT_THAT(calls, ::testing::ElementsAre(""));
}

// Does something to the declared function.
template <typename Change>
Step changing(Change change)
{
    return [=](EnvironmentFixture& test) { change(*test.environment().getFunc("spawn")); };
}

Step unbound()
{
    return [](EnvironmentFixture& test) { test.environment().setFunc("spawn"); };
}

const Facts<FunctionTest> FACTS(
    "FunctionTest",
    {
        {"CalledUnboundLogsOncePerCall",
         {unbound(), run("spawn(1) spawn()"), logs({UNBOUND, UNBOUND})}},
        {"CalledUnboundReturnsNothingToTheScript",
         {unbound(), is("select('#', spawn())", "0"), logsCount(1)}},
        {"UnboundOneStillChecksItsArguments",
         {unbound(),
          changing([](Function& function) { function.addParameter(PARAM_TYPE_INT); }),
          stops("spawn('x')", "Error l.1 while calling spawn. Expected int, got string.")}},
        {"SetFunctionReplacesTheCallable",
         {function("spawn", {}, returning(1)),
          changing([](Function& function) { function.setFunction(returning(2)); }),
          is("spawn()", "2")}},
        {"ResetBindsTheDefaultCallable",
         {function("spawn", {}, returning(1)),
          changing([](Function& function) { function.reset(); }),
          is("select('#', spawn())", "0"),
          logs({UNBOUND})}},
    });

struct DeclaredKind
{
    const char* row;
    FUNCTION_PARAMETER_TYPE type;
    const char* argument;
    const char* expectedName; // of the kind, in messages
};

using FunctionDeclaredKindTest = OnRows<FunctionTest, DeclaredKind>;

TEST_P(FunctionDeclaredKindTest, IsTheKindThatTheCallableGets)
{
    FUNCTION_PARAMETER_TYPE received = PARAM_TYPE_VOID;
    Function* const function = environment().setFunc("spawn");
    function->setFunction(doing([&](auto& parameters) { received = parameters[0].getType(); }));
    function->addParameter(GetParam().type);
    run(std::string("spawn(") + GetParam().argument + ")");
    EXPECT_EQ(received, GetParam().type);
}

TEST_P(FunctionDeclaredKindTest, TypeNameCountsForUserTypesOnly)
{
    if (GetParam().type == PARAM_TYPE_BOOL)
        return; // takes everything
    environment().setFunc("spawn")->addParameter(GetParam().type, "Enemy");
    stops(
        "spawn(coroutine.create(print))",
        std::string("Error l.1 while calling spawn. Expected ") + GetParam().expectedName +
            ", got thread.");
}

ROWS(
    FunctionDeclaredKindTest,
    {"Bool", PARAM_TYPE_BOOL, "true", ""},
    {"Int", PARAM_TYPE_INT, "1", "int"},
    {"Float", PARAM_TYPE_FLOAT, "1", "float"},
    {"Double", PARAM_TYPE_DOUBLE, "1", "double"},
    {"String", PARAM_TYPE_STRING, "'x'", "string"},
    {"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "nil", "Enemy"},
    {"UserType", PARAM_TYPE_USER_TYPE, "nil", "Enemy"},
    {"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "print", "lua function"},
    {"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "{}", "lua object"});

} // namespace

} // namespace tbScripts::test
