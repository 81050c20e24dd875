// Handles on script values, as globals and back.

#include "support/EnvironmentFixture.h"
#include "support/FakeScriptObjects.h"

namespace tbScripts::test
{

using ::testing::IsEmpty;

// An expression; the interpreter itself makes such values here only.
constexpr const char* LIGHT_USERDATA =
    "(function() local x  return debug.upvalueid(function() return x end, 1) end)()";

class EnvironmentReferencesTest : public EnvironmentFixture
{
};

namespace
{

struct ReferenceRow
{
    const char* name;
    const char* value; // an expression
};

void PrintTo(const ReferenceRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentObjectReferenceTest : public EnvironmentFixture,
                                       public ::testing::WithParamInterface<ReferenceRow>
{
protected:
    void SetUp() override { run(std::string("v = ") + GetParam().value); }
};

TEST_P(EnvironmentObjectReferenceTest, IsOfKindObject)
{
    const ScriptObjectReference reference = environment().getVar("v");

    EXPECT_NE(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getType(), PARAM_TYPE_SCRIPT_OBJECT);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

TEST_P(EnvironmentObjectReferenceTest, GivesBackTheSameValue)
{
    const ScriptObjectReference reference = environment().getVar("v");

    environment().setVar("w", reference);

    run("assert(v == w and w ~= nil)");
}

TEST_P(EnvironmentObjectReferenceTest, IsNotAFunction)
{
    const ScriptObjectReference reference = environment().getScriptFunction("v");

    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentObjectReferenceTest,
    ::testing::Values(
        ReferenceRow{"True", "true"},
        ReferenceRow{"False", "false"},
        ReferenceRow{"Number", "1.5"},
        ReferenceRow{"Text", "'text'"},
        ReferenceRow{"Table", "{}"},
        ReferenceRow{"Userdata", "newproxy()"}),
    [](const auto& row) { return std::string(row.param.name); });

class EnvironmentNoObjectReferenceTest : public EnvironmentFixture,
                                         public ::testing::WithParamInterface<ReferenceRow>
{
};

TEST_P(EnvironmentNoObjectReferenceTest, IsEmpty)
{
    run(std::string("v = ") + GetParam().value);

    const ScriptObjectReference reference = environment().getVar("v");

    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getType(), PARAM_TYPE_VOID);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentNoObjectReferenceTest,
    ::testing::Values(
        ReferenceRow{"Nil", "nil"},
        ReferenceRow{"ScriptFunction", "function() end"},
        ReferenceRow{"LibraryFunction", "print"},
        ReferenceRow{"Coroutine", "coroutine.create(print)"},
        ReferenceRow{"LightUserdata", LIGHT_USERDATA},
        ReferenceRow{"ForeignInteger", "1LL"}),
    [](const auto& row) { return std::string(row.param.name); });

class EnvironmentScriptFunctionTest : public EnvironmentFixture,
                                      public ::testing::WithParamInterface<ReferenceRow>
{
};

TEST_P(EnvironmentScriptFunctionTest, IsOfKindFunction)
{
    declare("hostFunction", {}, [](const Parameters&) { return FunctionParameter::VOID; });
    run(std::string("f = ") + GetParam().value);

    const ScriptObjectReference function = environment().getScriptFunction("f");

    EXPECT_EQ(function.getType(), PARAM_TYPE_SCRIPT_FUNCTION);
    EXPECT_EQ(function.getUseCount(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentScriptFunctionTest,
    ::testing::Values(
        ReferenceRow{"ScriptFunction", "function() end"},
        ReferenceRow{"LibraryFunction", "print"},
        ReferenceRow{"HostFunction", "hostFunction"},
        ReferenceRow{"WrappedCoroutine", "coroutine.wrap(print)"}),
    [](const auto& row) { return std::string(row.param.name); });

class EnvironmentNoScriptFunctionTest : public EnvironmentFixture,
                                        public ::testing::WithParamInterface<ReferenceRow>
{
};

TEST_P(EnvironmentNoScriptFunctionTest, IsSilentlyEmpty)
{
    run(std::string("f = ") + GetParam().value);

    const ScriptObjectReference function = environment().getScriptFunction("f");

    EXPECT_EQ(function.getInterpreterReference(), nullptr);
    EXPECT_EQ(function.getUseCount(), 1U);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentNoScriptFunctionTest,
    ::testing::Values(
        ReferenceRow{"Nil", "nil"},
        ReferenceRow{"Text", "'print'"},
        ReferenceRow{"Table", "{}"},
        ReferenceRow{"CallableTable", "setmetatable({}, {__call = print})"},
        ReferenceRow{"Userdata", "newproxy()"},
        ReferenceRow{"Coroutine", "coroutine.create(print)"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(EnvironmentReferencesTest, ReferenceKeepsItsValueAlive)
{
    run("v = {answer = 42}");
    const ScriptObjectReference reference = environment().getVar("v");

    run("v = nil");
    environment().requestGarbageCollection();
    environment().setVar("w", reference);

    run("assert(w.answer == 42)");
}

TEST_F(EnvironmentReferencesTest, LastHolderLetsTheValueGo)
{
    run("v = {}  weak = setmetatable({v}, {__mode = 'v'})");
    {
        const ScriptObjectReference reference = environment().getVar("v");
        const ScriptObjectReference copy = reference;
        run("v = nil");
    }

    environment().requestGarbageCollection();

    run("assert(weak[1] == nil)");
}

TEST_F(EnvironmentReferencesTest, FunctionReferenceStoredAsGlobalCanBeCalled)
{
    run("function f() return 42 end");

    environment().setVar("g", environment().getScriptFunction("f"));

    run("assert(g() == 42)");
}

// Once a registry slot was freed, the interpreter keeps a number where an empty reference points.
TEST_F(EnvironmentReferencesTest, EmptyReferenceStoresNil)
{
    environment().getVar("string");
    environment().setVar("v", 1);

    environment().setVar("v", ScriptObjectReference());

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentReferencesTest, ReferenceOfAnotherEnvironmentStoresNil)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setVar("v", "text");
    const ScriptObjectReference foreign = other.getVar("v");
    environment().setVar("v", 1);

    environment().setVar("v", foreign);

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentReferencesTest, ReferenceThatIsNotOursStoresNil)
{
    environment().setVar("v", 1);

    environment().setVar("v", ScriptObjectReference(new FakeReference));

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentReferencesTest, ReferenceOfAnEarlierInterpreterStoresNil)
{
    run("v = {}");
    const ScriptObjectReference stale = environment().getVar("v");
    environment().setEnvironmentFor(INTERPRETER_LUA);
    environment().setVar("v", 1);

    environment().setVar("v", stale);

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentReferencesTest, ReferenceOutlivesItsInterpreter)
{
    run("v = {}");
    const ScriptObjectReference stale = environment().getVar("v");

    environment().setEnvironmentFor(INTERPRETER_LUA);

    EXPECT_EQ(stale.getUseCount(), 1U);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentReferencesTest, ReferenceOutlivesItsEnvironment)
{
    run("v = {}");
    const ScriptObjectReference stale = environment().getVar("v");

    destroyEnvironment();

    EXPECT_EQ(stale.getUseCount(), 1U);
    EXPECT_THAT(m_log.takeEntries(), IsEmpty());
}

TEST_F(EnvironmentReferencesTest, EmptyReferenceCannotBeSerialized)
{
    const tbMemory::Buffer bytes =
        environment().serializeScriptObject(ScriptObjectReference(), false);

    EXPECT_TRUE(bytes.empty());
}

TEST_F(EnvironmentReferencesTest, NoBytesGiveAnEmptyReference)
{
    const ScriptObjectReference reference =
        environment().deserializeScriptObject(tbMemory::BufferView<unsigned char>());

    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

} // namespace tbScripts::test
