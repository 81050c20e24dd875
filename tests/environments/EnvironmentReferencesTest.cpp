// Handles on script values, as globals and back.

#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"
#include "support/Execution.h"
#include "support/RowName.h"

namespace tbScripts::test
{

using tbMemory::StringView;

// An expression; the interpreter itself makes such values here only.
constexpr const char* LIGHT_USERDATA =
    "(function() local x  return debug.upvalueid(function() return x end, 1) end)()";

using EnvironmentReferencesTest = EnvironmentFixture;

namespace
{

// What a host can hold of a value.
enum class Handle
{
    NONE,
    OBJECT,
    FUNCTION
};

struct ValueRow
{
    const char* row;
    const char* value; // an expression
    Handle handle;
};

} // namespace

class EnvironmentValueHandleTest : public OnRows<EnvironmentFixture, ValueRow>
{
protected:
    void SetUp() override
    {
        declareAction("hostFunction", [] {});
        run(std::string("v = ") + GetParam().value);
    }
};

TEST_P(EnvironmentValueHandleTest, IsAnObjectThatStoresTheSameValueOrEmpty)
{
    const bool isObject = GetParam().handle == Handle::OBJECT;

    const ScriptObjectReference reference = environment().getVar("v");

    EXPECT_EQ(reference.getInterpreterReference() != nullptr, isObject);
    EXPECT_EQ(reference.getType(), isObject ? PARAM_TYPE_SCRIPT_OBJECT : PARAM_TYPE_VOID);
    EXPECT_EQ(reference.getUseCount(), 1U);
    environment().setVar("w", reference);
    run(isObject ? "assert(v == w and w ~= nil)" : "assert(w == nil)");
}

TEST_P(EnvironmentValueHandleTest, IsAFunctionOrSilentlyEmpty)
{
    const bool isFunction = GetParam().handle == Handle::FUNCTION;

    const ScriptObjectReference function = environment().getScriptFunction("v");

    EXPECT_EQ(function.getInterpreterReference() != nullptr, isFunction);
    EXPECT_EQ(function.getType(), isFunction ? PARAM_TYPE_SCRIPT_FUNCTION : PARAM_TYPE_VOID);
    EXPECT_EQ(function.getUseCount(), 1U);
}

TEST_P(EnvironmentValueHandleTest, IsNoHostObject)
{
    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), nullptr);
}

ROWS(
    EnvironmentValueHandleTest,
    {"Nil", "nil", Handle::NONE},
    {"True", "true", Handle::OBJECT},
    {"False", "false", Handle::OBJECT},
    {"Number", "1.5", Handle::OBJECT},
    {"String", "'print'", Handle::OBJECT},
    {"StringOfATypeName", "'T'", Handle::OBJECT},
    {"Table", "{}", Handle::OBJECT},
    {"TableWithName", "setmetatable({}, {__name = 'T'})", Handle::OBJECT},
    {"CallableTable", "setmetatable({}, {__call = print})", Handle::OBJECT},
    {"EmptyUserdata", "newproxy()", Handle::OBJECT},
    {"ScriptFunction", "function() end", Handle::FUNCTION},
    {"LibraryFunction", "print", Handle::FUNCTION},
    {"HostFunction", "hostFunction", Handle::FUNCTION},
    {"WrappedCoroutine", "coroutine.wrap(print)", Handle::FUNCTION},
    {"Coroutine", "coroutine.create(print)", Handle::NONE},
    {"LightUserdata", LIGHT_USERDATA, Handle::NONE},
    {"ForeignInteger", "1LL", Handle::NONE});

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

TEST_F(EnvironmentReferencesTest, EmptyReferenceIsNoBytesAndNoBytesAreAnEmptyReference)
{
    EXPECT_TRUE(environment().serializeScriptObject(ScriptObjectReference(), false).empty());

    const ScriptObjectReference reference =
        environment().deserializeScriptObject(tbMemory::BufferView<unsigned char>());
    EXPECT_EQ(reference.getInterpreterReference(), nullptr);
    EXPECT_EQ(reference.getUseCount(), 1U);
}

// Host objects as globals, as far as they need no declared type.
class EnvironmentObjectsTest : public EnvironmentFixture
{
protected:
    int m_object = 0;
};

TEST_F(EnvironmentObjectsTest, ObjectOfUnknownTypeIsUserdataWithoutMetatableAndNoInstanceOfIt)
{
    environment().setObject("v", "T", &m_object);

    run("assert(type(v) == 'userdata' and debug.getmetatable(v) == nil)");
    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
}

TEST_F(EnvironmentObjectsTest, TypeNameOfSomethingElseInTheRegistryGivesNoMetatable)
{
    environment().setObject("v", "FILE*", &m_object);

    run("assert(debug.getmetatable(v) == nil)");
}

TEST_F(EnvironmentObjectsTest, NullTypeNameGivesNoMetatable)
{
    environment().setObject("v", StringView(), &m_object);

    run("assert(debug.getmetatable(v) == nil)");
    EXPECT_EQ(environment().getObject("v", StringView()), &m_object);
}

// Null skips the test of the type; empty is the name of a type, which is not this one's.
TEST_F(EnvironmentObjectsTest, NullTypeNameReadsAnyObjectAndTheEmptyOneDoesNot)
{
    environment().setObject("v", "T", &m_object);

    EXPECT_EQ(environment().getObject("v", StringView()), &m_object);
    EXPECT_EQ(environment().getObject("v", ""), nullptr);
}

TEST_F(EnvironmentObjectsTest, NullObjectIsNil)
{
    environment().setVar("v", 1);

    environment().setObject("v", "T", nullptr);

    EXPECT_FALSE(environment().isVarSet("v"));
}

TEST_F(EnvironmentObjectsTest, EachSettingMakesAValueOfItsOwn)
{
    environment().setObject("v", "T", &m_object);
    environment().setObject("w", "T", &m_object);

    run("assert(v ~= w)");
}

TEST_F(EnvironmentObjectsTest, CollectedObjectStaysTheHosts)
{
    CountedObject::restart();
    const CountedObject object;
    environment().setObject("v", "T", const_cast<CountedObject*>(&object));

    run("v = nil");
    environment().requestGarbageCollection();

    EXPECT_EQ(CountedObject::getLiving(), 1);
}

TEST_F(EnvironmentObjectsTest, UserdataOfALibraryIsReadWithoutATypeName)
{
    run("v = io.stdout");

    EXPECT_NE(environment().getObject("v", StringView()), nullptr);
    EXPECT_EQ(environment().getObject("v", "FILE*"), nullptr);
}

// Tables can say anything in "__name"; only the types of the host are believed.
TEST_F(EnvironmentObjectsTest, NameWrittenByAScriptMakesNoInstance)
{
    run("v = newproxy(true)  getmetatable(v).__name = 'T'");

    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
}

// Scripts that change the global table itself, and host calls out of coroutines.
using EnvironmentGlobalTableTest = EnvironmentFixture;

TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsReadByHostAndScripts)
{
    run("v = 1  setfenv(0, {v = 2})");

    EXPECT_EQ(environment().getVar("v", -1), 2);
    EXPECT_FALSE(environment().isVarSet("print"));
    run("w = v");
    EXPECT_EQ(environment().getVar("w", -1), 2);
    EXPECT_EQ(
        runExpectingError("print('x')"),
        "Error while executing script 'test' : [string \"print('x')\"]:1: attempt to call global "
        "'print' (a nil value)");
}

TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsWrittenAndTakesFunctions)
{
    run("setfenv(0, {replacement = true})");

    environment().setVar("v", 2);
    declareAction("f", [] {});

    EXPECT_EQ(environment().getVar("v", -1), 2);
    EXPECT_TRUE(environment().getVar("replacement", false));
    EXPECT_TRUE(environment().isVarSet("f"));
    run("f()");
}

// What the interpreter's own end finalises cannot report any more: this goes before.
TEST_F(EnvironmentGlobalTableTest, ReplacedTableIsClearedAtTheEnd)
{
    run("local error, kept = error, newproxy(true) "
        "getmetatable(kept).__gc = function() error('gone', 0) end "
        "setfenv(0, {kept = kept})");

    destroyEnvironment();

    expectLogged("gone", "LuaEnvironment");
}

TEST_F(EnvironmentGlobalTableTest, StrictGlobalsEndSilently)
{
    declareAction("f", [] {});
    run("setmetatable(_G, {__index = error, __newindex = error})");

    destroyEnvironment();
}

TEST_F(EnvironmentGlobalTableTest, GlobalsAreReadAndSetOutOfACoroutine)
{
    int seen = 0;
    declareAction("look", [&] { seen = environment().getVar("v", -1); });
    declareAction("put", [&] { environment().setVar("v", 43); });

    run("v = 42  coroutine.wrap(function() look()  put()  assert(v == 43) end)()");

    EXPECT_EQ(seen, 42);
    EXPECT_EQ(environment().getVar("v", -1), 43);
}

TEST_F(EnvironmentGlobalTableTest, ScriptRunsOutOfACoroutine)
{
    declareAction("runInner", [&] { runScript(environment(), "v = 42  return 1, 2, 3"); });

    run("coroutine.wrap(function() local a, b = 'a', 'b'  runInner()  w = a .. b end)()");

    EXPECT_EQ(environment().getVar("v", -1), 42);
    EXPECT_EQ(environment().getVar("w", ""), "ab");
}

TEST_F(EnvironmentGlobalTableTest, ScriptFunctionIsCalledOutOfACoroutine)
{
    std::vector<FunctionParameter> outputs{FunctionParameter(0)};
    declareAction("callInner", [&] { call("inner", {FunctionParameter(41)}, outputs); });

    run("function inner(value) return value + 1 end "
        "coroutine.wrap(function() callInner() end)()");

    EXPECT_EQ(outputs[0].getInt(), 42);
}

TEST_F(EnvironmentGlobalTableTest, ReferenceMadeInACoroutineOutlivesIt)
{
    ScriptObjectReference reference;
    declareAction("take", [&] { reference = environment().getVar("v"); });
    run("v = {answer = 42}  coroutine.wrap(function() take() end)()  v = nil");
    environment().requestGarbageCollection();

    environment().setVar("w", reference);

    run("assert(w.answer == 42)");
}

// A coroutine may have globals of its own; those of the host are the main ones.
TEST_F(EnvironmentGlobalTableTest, MainGlobalsAreThoseOfTheHostOutOfACoroutineWithItsOwn)
{
    int seen = 0;
    declareAction(
        "work",
        [&]
        {
            seen = environment().getVar("v", -1);
            runScript(environment(), "w = v");
            environment().setVar("v", 44);
        });

    run("v = 42  local work, setfenv = work, setfenv "
        "coroutine.wrap(function() setfenv(0, {v = 43})  work() end)()");

    EXPECT_EQ(seen, 42);
    EXPECT_EQ(environment().getVar("w", -1), 42);
    EXPECT_EQ(environment().getVar("v", -1), 44);
}

} // namespace tbScripts::test
