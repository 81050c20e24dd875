#include "support/RowName.h"
#include "support/UserTypeSteps.h"

namespace tbScripts::test
{

namespace
{

struct FieldValue
{
    const char* row;
    FunctionParameter value;
    const char* shown;
};

struct KeyRow
{
    const char* row;
    const char* key;
};

const char* const LONG_NAME = "a field whose name is long enough to have memory of its own";

} // namespace

class UserTypeFieldsTest : public UserTypeFixture
{
protected:
    UserTypeFieldsTest() { setHostObject("v", m_hostObject); }
};

using UserTypeFieldValueTest = OnRows<UserTypeFieldsTest, FieldValue>;

TEST_P(UserTypeFieldValueTest, IsWhatTheScriptReads)
{
    setGetter(vec(), "x", [](void*) { return GetParam().value; });
    is("v.x", GetParam().shown);
}

ROWS(
    UserTypeFieldValueTest,
    {"Void", FunctionParameter::VOID, "nil"},
    {"Bool", false, "false"},
    {"Int", -7, "-7"},
    {"Float", 0.5F, "0.5"},
    {"Double", 0.25, "0.25"},
    {"Text", "spear", "spear"},
    {"EmptyText", "", ""},
    {"NullObject", FunctionParameter(nullptr, "Vec", true), "nil"},
    {"EmptyReference", ScriptObjectReference(), "nil"});

TEST_F(UserTypeFieldsTest, GetterGetsTheObject)
{
    void* object = nullptr;
    setGetter(vec(), "x", [&object](void* instance) { return object = instance, 7; });
    is("v.x", "7");
    EXPECT_EQ(object, &m_hostObject);
}

TEST_F(UserTypeFieldsTest, GetterOfAnInstanceWithoutObjectGetsNull)
{
    vec().setConstructor([](const Parameters&) { return nullptr; });
    vec().setDestructor([](void*) {});
    setGetter(vec(), "isNull", [](void* object) { return object == nullptr; });
    is("Vec.new().isNull", "true");
}

TEST_F(UserTypeFieldsTest, ObjectOfAGetterThatTheHostKeepsIsNotDestroyed)
{
    setGetter(vec(), "other", [](void* object) { return FunctionParameter(object, "Vec", false); });
    run("other = v.other");
    isObject("other", HOST_OBJECT);
    run("other = nil");
    collect();
    isDestroyed({});
}

TEST_F(UserTypeFieldsTest, ObjectOfAGetterThatTheScriptOwnsIsDestroyed)
{
    setGetter(
        vec(),
        "copy",
        [this](void* object)
        { return FunctionParameter(&m_made.emplace_back(vecAt(object)), "Vec", true); });
    run("local copy = v.copy");
    collect();
    isDestroyed({0});
}

TEST_F(UserTypeFieldsTest, ReferenceOfAGetterIsItsValue)
{
    run("list = {}");
    const ScriptObjectReference list = environment().getVar("list");
    setGetter(vec(), "list", [list](void*) { return FunctionParameter(list); });
    is("rawequal(v.list, list)", "true");
}

TEST_F(UserTypeFieldsTest, LaterSetterReplacesTheEarlierOne)
{
    std::vector<int> calls;
    for (const int number : {1, 2})
        setSetter(vec(), "x", PARAM_TYPE_DOUBLE, [=, &calls](auto&) { calls.push_back(number); });
    run("v.x = 8");
    EXPECT_EQ(calls, std::vector<int>{2});
}

TEST_F(UserTypeFieldsTest, LaterDescriptorWithoutSetterKeepsTheEarlierOne)
{
    int calls = 0;
    setSetter(vec(), "x", PARAM_TYPE_DOUBLE, [&calls](auto&) { ++calls; });
    setGetter(vec(), "x", [](void*) { return 1; });
    run("v.x = 8");
    EXPECT_EQ(calls, 1);
}

TEST_F(UserTypeFieldsTest, DescriptorWithoutBothDeclaresNothing)
{
    UserTypeFieldDescriptor descriptor;
    descriptor.name = "x";
    vec().setField(descriptor);
    run("v.x = 8");
    is("v.x", "nil");
}

const Facts<UserTypeFieldsTest> FIELD_FACTS(
    "UserTypeFieldsTest",
    {
        {"VoidOfAGetterIsNoResult",
         {getter("x", FunctionParameter::VOID), is("select('#', Vec.__index(v, 'x'))", "0")}},
        {"ValueOfNoKindIsLoggedAndNoResult",
         {getter("x", FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(200))),
          is("v.x", "nil"),
          logs(
              "Error while filling output for function 'x', parameter type not handled.",
              "LuaFunction")}},
        {"GetterComesBeforeAMethodThatWasSetFirst", // and found once as a method
         {method("size", 1), run("local method = v.size"), getter("size", 2), is("v.size", "2")}},
        {"GetterComesBeforeAMethodThatWasSetLater",
         {getter("size", 2), method("size", 1), is("v.size", "2"), is("Vec.size(v)", "1")}},
        {"SetterAloneDoesNotHideAMethod", {method("size", 1), setter("size"), is("v:size()", "1")}},
        {"GetterComesBeforeARawEntry", // that was found once as such
         {run("local raw = v.new, v.__name"),
          getter("new", "field"),
          is("v.new", "field"),
          is("type(Vec.new)", "function")}},
        {"UnknownFieldReadsAsNil", {is("v.unknown", "nil")}},
        {"UnknownFieldIsNoResult", {is("select('#', Vec.__index(v, 'unknown'))", "0")}},
        {"UnknownFieldCanBeWrittenWithoutEffect",
         {run("v.unknown = 1"), is("v.unknown", "nil"), is("rawget(Vec, 'unknown')", "nil")}},
        {"NamesAreCaseSensitive",
         {field("x"), run("v.X = 3"), hasX(HOST_OBJECT, 0.0), is("v.X", "nil")}},
        {"RawEntryOfTheTypeCannotBeWrittenThroughAnInstance",
         {run("v.new = 1  v.__name = 'mine'"),
          is("type(Vec.new)", "function"),
          is("Vec.__name", "Vec")}},
        {"FieldWithoutSetterCanBeWrittenWithoutEffect",
         {getter("x", 7), run("v.x = 8"), is("v.x", "7")}},
        {"FieldWithoutGetterReadsAsNil", {setter("x"), is("v.x", "nil")}},
        {"LaterGetterReplacesTheEarlierOne",
         {getter("x", 1), run("local found = v.x"), getter("x", 2), is("v.x", "2")}},
        {"LaterDescriptorWithoutGetterKeepsTheEarlierOne",
         {getter("x", 1), setter("x"), is("v.x", "1")}},
        {"NameIsCopied",
         {[](auto& test)
          { setGetter(test.vec(), std::string(LONG_NAME), [](void*) { return 7; }); },
          is(std::string("v['") + LONG_NAME + "']", "7")}},
        {"EmptyNameIsAName",
         {field(""), run("v[''] = 3"), is("v['']", "3"), hasX(HOST_OBJECT, 3.0)}},
        {"TypeItselfHasNone",
         {field("x"), run("Vec.x = 'mine'"), is("Vec.x", "mine"), is("v.x", "0")}},
        {"InstancesMadeBeforeHaveIt",
         {run("old = Vec.new()  local nothing = old.x  old.x = 1"),
          field("x"),
          run("old.x = 3"),
          is("old.x", "3")}},
        {"NameThatOnlyBeginsAsANumberIsReached",
         {field("3d"), run("v['3d'] = 5"), is("v['3d']", "5")}},
        {"KeyThatIsNoTextReadsTheRawEntryOfTheType",
         {run("key = {}  Vec[key] = 'raw'  Vec[true] = 'truth'"),
          is("v[key]", "raw"),
          is("v[true]", "truth")}},
    });

class UserTypeNumericNameTest : public OnRows<UserTypeFieldsTest, KeyRow>
{
protected:
    const std::string m_element = std::string("v['") + GetParam().key + "']";
};

TEST_P(UserTypeNumericNameTest, IsNotReachedByReading)
{
    setGetter(vec(), GetParam().key, [](void*) { return ADD_FAILURE() << "it was called", 7; });
    is(m_element, "nil");
}

TEST_P(UserTypeNumericNameTest, IsNotReachedByWriting)
{
    setSetter(
        vec(), GetParam().key, PARAM_TYPE_DOUBLE, [](auto&) { ADD_FAILURE() << "it was called"; });
    run(m_element + " = 7");
}

TEST_P(UserTypeNumericNameTest, GoesToArrayAccess)
{
    declareArrayAccess();
    run(m_element + " = 7");
    is(m_element, "7");
    EXPECT_EQ(m_hostObject.x + m_hostObject.y, 7.0);
}

ROWS(
    UserTypeNumericNameTest,
    {"Digit", "3"},
    {"Negative", "-1"},
    {"Fraction", "2.9"},
    {"Exponent", "1e2"},
    {"Hexadecimal", "0x10"},
    {"Blanks", " 5 "},
    {"Infinity", "inf"},
    {"NotANumber", "nan"});

class UserTypeOtherKeyTest : public OnRows<UserTypeFieldsTest, KeyRow>
{
protected:
    UserTypeOtherKeyTest()
    {
        declareArrayAccess();
        run("key = " + std::string(GetParam().key));
    }
};

TEST_P(UserTypeOtherKeyTest, ReadsAsNil)
{
    is("v[key]", "nil");
}

TEST_P(UserTypeOtherKeyTest, CanBeWrittenWithoutEffect)
{
    run("v[key] = 7");
    EXPECT_EQ(m_hostObject.x + m_hostObject.y, 0.0);
    is("v[key]", "nil");
}

ROWS(
    UserTypeOtherKeyTest,
    {"Nil", "nil"},
    {"Bool", "true"},
    {"Table", "{}"},
    {"Function", "print"},
    {"Instance", "Vec.new()"},
    {"Coroutine", "coroutine.create(print)"},
    {"BoxedInteger", "1LL"});

} // namespace tbScripts::test
