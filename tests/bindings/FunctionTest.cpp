#include "support/EnvironmentFixture.h"

#include <tbScripts/LogManager.h>

#include <memory>
#include <ostream>
#include <utility>

namespace tbScripts::test
{

using ::testing::ElementsAre;

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

// A callable that keeps `token` alive as long as it lives.
Function::Callable holding(const std::shared_ptr<int>& token)
{
    return [token](const Parameters&) { return FunctionParameter::VOID; };
}

} // namespace

class FunctionTest : public EnvironmentFixture
{
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

TEST_F(FunctionTest, EndsWithItsCallable)
{
    const auto token = std::make_shared<int>(1);
    auto function = std::make_unique<Function>("spawn");
    function->setFunction(holding(token));
    ASSERT_EQ(token.use_count(), 2);

    function.reset();

    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(FunctionTest, DefaultFunctionLogsAndReturnsNoResult)
{
    Function function("spawn");

    const FunctionParameter result = function.defaultFunction({FunctionParameter(7)});

    EXPECT_EQ(result.getType(), 0U);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'spawn' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(FunctionTest, DefaultFunctionMakesTheLogManagerIfThereIsNone)
{
    Function function("spawn");
    LogManager::getInstance()->kill();
    ASSERT_EQ(LogManager::getInstanceIfExisting(), nullptr);

    function.defaultFunction(Parameters());

    EXPECT_NE(LogManager::getInstanceIfExisting(), nullptr);
}

TEST_F(FunctionTest, NewOneHasNoParameters)
{
    std::size_t received = 99;
    environment().setFunc("spawn")->setFunction(
        [&received](const Parameters& parameters)
        {
            received = parameters.size();
            return FunctionParameter::VOID;
        });

    run("spawn(1, 2)");

    EXPECT_EQ(received, 0U);
}

TEST_F(FunctionTest, CalledUnboundLogsOncePerCall)
{
    environment().setFunc("spawn");

    run("spawn(1) spawn()");

    const LogEntry entry{
        "Function 'spawn' called but no user function is bound. Call having no effect.",
        "Function"};
    EXPECT_THAT(m_log.takeEntries(), ElementsAre(entry, entry));
}

TEST_F(FunctionTest, CalledUnboundReturnsNothingToTheScript)
{
    environment().setFunc("spawn");

    run("results = select('#', spawn())");

    EXPECT_EQ(environment().getVar("results", -1), 0);
    EXPECT_EQ(m_log.takeEntries().size(), 1U);
}

TEST_F(FunctionTest, UnboundOneStillChecksItsArguments)
{
    environment().setFunc("spawn")->addParameter(PARAM_TYPE_INT);

    const std::string message = runExpectingError("spawn('x')");

    EXPECT_EQ(
        message,
        "Error while executing script 'test' : Error l.1 while calling spawn. Expected int, got "
        "string.");
}

TEST_F(FunctionTest, SetFunctionReplacesTheCallable)
{
    Function* const function = declare("answer", {}, [](const Parameters&) { return 1; });

    function->setFunction([](const Parameters&) { return 2; });

    run("result = answer()");
    EXPECT_EQ(environment().getVar("result", -1), 2);
}

TEST_F(FunctionTest, SetFunctionEndsTheEarlierCallable)
{
    const auto token = std::make_shared<int>(1);
    Function function("spawn");
    function.setFunction(holding(token));

    function.setFunction([](const Parameters&) { return FunctionParameter::VOID; });

    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(FunctionTest, SetFunctionTakesACallableThatIsMovedInWithoutCopyingIt)
{
    int copies = 0;
    Function function("spawn");
    Function::Callable callable = CopyCountingCallable(copies);
    copies = 0;

    function.setFunction(std::move(callable));

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

TEST_F(FunctionTest, ResetBindsTheDefaultCallable)
{
    Function* const function = declare("spawn", {}, [](const Parameters&) { return 1; });

    function->reset();

    run("results = select('#', spawn())");
    EXPECT_EQ(environment().getVar("results", -1), 0);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function 'spawn' called but no user function is bound. Call having no effect.",
            "Function"}));
}

TEST_F(FunctionTest, ResetForgetsTheParameters)
{
    std::size_t received = 99;
    const auto take = [&received](const Parameters& parameters)
    {
        received = parameters.size();
        return FunctionParameter::VOID;
    };
    Function* const function = declare("spawn", {PARAM_TYPE_INT, PARAM_TYPE_STRING}, take);

    function->reset();

    function->setFunction(take);
    run("spawn(1, 'x')");
    EXPECT_EQ(received, 0U);
}

TEST_F(FunctionTest, ResetEndsTheCallable)
{
    const auto token = std::make_shared<int>(1);
    Function function("spawn");
    function.setFunction(holding(token));

    function.reset();

    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(FunctionTest, ResetKeepsTheName)
{
    Function function("spawn");

    function.reset();

    EXPECT_EQ(function.getName(), "spawn");
}

namespace
{

struct DeclaredKind
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    const char* argument;
};

std::ostream& operator<<(std::ostream& stream, const DeclaredKind& row)
{
    return stream << row.name;
}

} // namespace

class FunctionDeclaredKindTest : public EnvironmentFixture,
                                 public ::testing::WithParamInterface<DeclaredKind>
{
};

TEST_P(FunctionDeclaredKindTest, IsTheKindThatTheCallableGets)
{
    FUNCTION_PARAMETER_TYPE received = PARAM_TYPE_VOID;
    Function* const function = environment().setFunc("spawn");
    function->setFunction(
        [&received](const Parameters& parameters)
        {
            received = parameters[0].getType();
            return FunctionParameter::VOID;
        });

    function->addParameter(GetParam().type);

    run(std::string("spawn(") + GetParam().argument + ")");
    EXPECT_EQ(received, GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    FunctionDeclaredKindTest,
    ::testing::Values(
        DeclaredKind{"Bool", PARAM_TYPE_BOOL, "true"},
        DeclaredKind{"Int", PARAM_TYPE_INT, "1"},
        DeclaredKind{"Float", PARAM_TYPE_FLOAT, "1"},
        DeclaredKind{"Double", PARAM_TYPE_DOUBLE, "1"},
        DeclaredKind{"String", PARAM_TYPE_STRING, "'x'"},
        DeclaredKind{"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "nil"},
        DeclaredKind{"UserType", PARAM_TYPE_USER_TYPE, "nil"},
        DeclaredKind{"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "print"},
        DeclaredKind{"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "{}"}),
    [](const auto& row) { return std::string(row.param.name); });

namespace
{

struct TypeNameUse
{
    const char* name;
    FUNCTION_PARAMETER_TYPE type;
    const char* expectedName;
};

std::ostream& operator<<(std::ostream& stream, const TypeNameUse& row)
{
    return stream << row.name;
}

} // namespace

class FunctionTypeNameTest : public EnvironmentFixture,
                             public ::testing::WithParamInterface<TypeNameUse>
{
};

TEST_P(FunctionTypeNameTest, CountsForUserTypesOnly)
{
    Function* const function = environment().setFunc("spawn");

    function->addParameter(GetParam().type, "Enemy");

    EXPECT_EQ(
        runExpectingError("spawn(coroutine.create(print))"),
        std::string("Error while executing script 'test' : Error l.1 while calling spawn. "
                    "Expected ") +
            GetParam().expectedName + ", got thread.");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    FunctionTypeNameTest,
    ::testing::Values(
        TypeNameUse{"Int", PARAM_TYPE_INT, "int"},
        TypeNameUse{"Float", PARAM_TYPE_FLOAT, "float"},
        TypeNameUse{"Double", PARAM_TYPE_DOUBLE, "double"},
        TypeNameUse{"String", PARAM_TYPE_STRING, "string"},
        TypeNameUse{"OwnedUserType", PARAM_TYPE_USER_TYPE_OWNED, "Enemy"},
        TypeNameUse{"UserType", PARAM_TYPE_USER_TYPE, "Enemy"},
        TypeNameUse{"ScriptFunction", PARAM_TYPE_SCRIPT_FUNCTION, "lua function"},
        TypeNameUse{"ScriptObject", PARAM_TYPE_SCRIPT_OBJECT, "lua object"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace tbScripts::test
