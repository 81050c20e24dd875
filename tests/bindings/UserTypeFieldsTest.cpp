#include "support/RowName.h"
#include "support/UserTypeFixture.h"

#include <ostream>

namespace tbScripts::test
{

using ::testing::ElementsAre;

namespace
{

struct FieldValue
{
    const char* row;
    FunctionParameter value;
    const char* shown;
};

std::ostream& operator<<(std::ostream& stream, const FieldValue& row)
{
    return stream << row.row;
}

struct NumericName
{
    const char* row;
    const char* name;
};

std::ostream& operator<<(std::ostream& stream, const NumericName& row)
{
    return stream << row.row;
}

struct OtherKey
{
    const char* row;
    const char* key;
};

std::ostream& operator<<(std::ostream& stream, const OtherKey& row)
{
    return stream << row.row;
}

} // namespace

class UserTypeFieldsTest : public UserTypeFixture
{
protected:
    UserTypeFieldsTest() { setHostObject("v", m_hostObject); }

    /// Declares a field that can only be read.
    void declareGetter(const std::string& name, Getter getter)
    {
        UserTypeFieldDescriptor field;
        field.getter = std::move(getter);
        field.name = name;
        vec().setField(field);
    }

    /// Declares a field that can only be written.
    void declareSetter(
        const std::string& name, Setter setter, FUNCTION_PARAMETER_TYPE type = PARAM_TYPE_DOUBLE)
    {
        UserTypeFieldDescriptor field;
        field.setter = std::move(setter);
        field.name = name;
        field.type = type;
        vec().setField(field);
    }
};

TEST_F(UserTypeFieldsTest, GetterGetsTheObject)
{
    void* object = nullptr;
    declareGetter(
        "x",
        [&object](void* instance)
        {
            object = instance;
            return FunctionParameter(7);
        });

    EXPECT_EQ(evaluate("v.x"), "7");
    EXPECT_EQ(object, &m_hostObject);
}

TEST_F(UserTypeFieldsTest, GetterOfAnInstanceWithoutObjectGetsNull)
{
    vec().setConstructor([](const Parameters&) { return nullptr; });
    vec().setDestructor([](void*) {});
    declareGetter("isNull", [](void* object) { return FunctionParameter(object == nullptr); });

    EXPECT_EQ(evaluate("Vec.new().isNull"), "true");
}

class UserTypeFieldValueTest : public UserTypeFieldsTest,
                               public ::testing::WithParamInterface<FieldValue>
{
};

TEST_P(UserTypeFieldValueTest, IsWhatTheScriptReads)
{
    declareGetter("x", [](void*) { return GetParam().value; });

    EXPECT_EQ(evaluate("v.x"), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    UserTypeFieldValueTest,
    ::testing::Values(
        FieldValue{"Void", FunctionParameter::VOID, "nil"},
        FieldValue{"Bool", false, "false"},
        FieldValue{"Int", -7, "-7"},
        FieldValue{"Float", 0.5F, "0.5"},
        FieldValue{"Double", 0.25, "0.25"},
        FieldValue{"Text", "spear", "spear"},
        FieldValue{"EmptyText", "", ""},
        FieldValue{"NullObject", FunctionParameter(nullptr, "Vec", true), "nil"},
        FieldValue{"EmptyReference", ScriptObjectReference(), "nil"}),
    RowName());

TEST_F(UserTypeFieldsTest, VoidOfAGetterIsNoResult)
{
    declareGetter("x", [](void*) { return FunctionParameter::VOID; });

    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 'x'))"), "0");
}

TEST_F(UserTypeFieldsTest, ObjectOfAGetterThatTheHostKeepsIsNotDestroyed)
{
    declareGetter("other", [](void* object) { return FunctionParameter(object, "Vec", false); });
    run("other = v.other");

    EXPECT_EQ(environment().getObject("other", "Vec"), &m_hostObject);
    run("other = nil");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre());
}

TEST_F(UserTypeFieldsTest, ObjectOfAGetterThatTheScriptOwnsIsDestroyed)
{
    declareGetter(
        "copy",
        [this](void* object)
        {
            m_made.push_back(vecAt(object));
            return FunctionParameter(&m_made.back(), "Vec", true);
        });

    run("local copy = v.copy");
    collect();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(UserTypeFieldsTest, ReferenceOfAGetterIsItsValue)
{
    run("list = {}");
    const ScriptObjectReference list = environment().getVar("list");

    declareGetter("list", [list](void*) { return FunctionParameter(list); });

    EXPECT_EQ(evaluate("rawequal(v.list, list)"), "true");
}

TEST_F(UserTypeFieldsTest, ValueOfNoKindIsLoggedAndNoResult)
{
    declareGetter(
        "x",
        [](void*) { return FunctionParameter::ofType(static_cast<FUNCTION_PARAMETER_TYPE>(200)); });

    EXPECT_EQ(evaluate("v.x"), "nil");
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Error while filling output for function 'x', parameter type not handled.",
            "LuaFunction"}));
}

TEST_F(UserTypeFieldsTest, GetterComesBeforeAMethodThatWasSetFirst)
{
    declareMethod("size", {}, [](const Parameters&) { return 1; });
    run("local method = v.size"); // found once as a method

    declareGetter("size", [](void*) { return FunctionParameter(2); });

    EXPECT_EQ(evaluate("v.size"), "2");
}

TEST_F(UserTypeFieldsTest, GetterComesBeforeAMethodThatWasSetLater)
{
    declareGetter("size", [](void*) { return FunctionParameter(2); });

    declareMethod("size", {}, [](const Parameters&) { return 1; });

    EXPECT_EQ(evaluate("v.size"), "2");
    EXPECT_EQ(evaluate("Vec.size(v)"), "1");
}

TEST_F(UserTypeFieldsTest, SetterAloneDoesNotHideAMethod)
{
    declareMethod("size", {}, [](const Parameters&) { return 1; });

    declareSetter("size", [](const Parameters&) {});

    EXPECT_EQ(evaluate("v:size()"), "1");
}

TEST_F(UserTypeFieldsTest, GetterComesBeforeARawEntry)
{
    run("local raw = v.new, v.__name"); // found once as such

    declareGetter("new", [](void*) { return FunctionParameter("field"); });

    EXPECT_EQ(evaluate("v.new"), "field");
    EXPECT_EQ(evaluate("type(Vec.new)"), "function");
}

TEST_F(UserTypeFieldsTest, UnknownFieldReadsAsNil)
{
    EXPECT_EQ(evaluate("v.unknown"), "nil");
}

TEST_F(UserTypeFieldsTest, UnknownFieldIsNoResult)
{
    EXPECT_EQ(evaluate("select('#', Vec.__index(v, 'unknown'))"), "0");
}

TEST_F(UserTypeFieldsTest, UnknownFieldCanBeWrittenWithoutEffect)
{
    run("v.unknown = 1");

    EXPECT_EQ(evaluate("v.unknown"), "nil");
    EXPECT_EQ(evaluate("rawget(Vec, 'unknown')"), "nil");
}

TEST_F(UserTypeFieldsTest, NamesAreCaseSensitive)
{
    declareField("x", &Vec::x);

    run("v.X = 3");

    EXPECT_EQ(m_hostObject.x, 0.0);
    EXPECT_EQ(evaluate("v.X"), "nil");
}

TEST_F(UserTypeFieldsTest, RawEntryOfTheTypeCannotBeWrittenThroughAnInstance)
{
    run("v.new = 1  v.__name = 'mine'");

    EXPECT_EQ(evaluate("type(Vec.new)"), "function");
    EXPECT_EQ(evaluate("Vec.__name"), "Vec");
}

TEST_F(UserTypeFieldsTest, FieldWithoutSetterCanBeWrittenWithoutEffect)
{
    declareGetter("x", [](void*) { return FunctionParameter(7); });

    run("v.x = 8");

    EXPECT_EQ(evaluate("v.x"), "7");
}

TEST_F(UserTypeFieldsTest, FieldWithoutGetterReadsAsNil)
{
    declareSetter("x", [](const Parameters&) {});

    EXPECT_EQ(evaluate("v.x"), "nil");
}

TEST_F(UserTypeFieldsTest, DescriptorWithoutBothDeclaresNothing)
{
    UserTypeFieldDescriptor field;
    field.name = "x";

    vec().setField(field);
    run("v.x = 8");

    EXPECT_EQ(evaluate("v.x"), "nil");
}

TEST_F(UserTypeFieldsTest, LaterGetterReplacesTheEarlierOne)
{
    declareGetter("x", [](void*) { return FunctionParameter(1); });
    run("local found = v.x");

    declareGetter("x", [](void*) { return FunctionParameter(2); });

    EXPECT_EQ(evaluate("v.x"), "2");
}

TEST_F(UserTypeFieldsTest, LaterSetterReplacesTheEarlierOne)
{
    std::vector<int> calls;
    declareSetter("x", [&calls](const Parameters&) { calls.push_back(1); });

    declareSetter("x", [&calls](const Parameters&) { calls.push_back(2); });
    run("v.x = 8");

    EXPECT_THAT(calls, ElementsAre(2));
}

TEST_F(UserTypeFieldsTest, LaterDescriptorWithoutGetterKeepsTheEarlierOne)
{
    declareGetter("x", [](void*) { return FunctionParameter(1); });

    declareSetter("x", [](const Parameters&) {});

    EXPECT_EQ(evaluate("v.x"), "1");
}

TEST_F(UserTypeFieldsTest, LaterDescriptorWithoutSetterKeepsTheEarlierOne)
{
    int calls = 0;
    declareSetter("x", [&calls](const Parameters&) { ++calls; });

    declareGetter("x", [](void*) { return FunctionParameter(1); });
    run("v.x = 8");

    EXPECT_EQ(calls, 1);
}

TEST_F(UserTypeFieldsTest, NameIsCopied)
{
    {
        const std::string name = "a field whose name is long enough to have memory of its own";
        declareGetter(name, [](void*) { return FunctionParameter(7); });
    }

    EXPECT_EQ(evaluate("v['a field whose name is long enough to have memory of its own']"), "7");
}

TEST_F(UserTypeFieldsTest, EmptyNameIsAName)
{
    declareField("", &Vec::x);

    run("v[''] = 3");

    EXPECT_EQ(evaluate("v['']"), "3");
    EXPECT_EQ(m_hostObject.x, 3.0);
}

TEST_F(UserTypeFieldsTest, TypeItselfHasNone)
{
    declareField("x", &Vec::x);

    run("Vec.x = 'mine'");

    EXPECT_EQ(evaluate("Vec.x"), "mine");
    EXPECT_EQ(evaluate("v.x"), "0");
}

TEST_F(UserTypeFieldsTest, InstancesMadeBeforeHaveIt)
{
    run("old = Vec.new()  local nothing = old.x  old.x = 1");

    declareField("x", &Vec::x);
    run("old.x = 3");

    EXPECT_EQ(evaluate("old.x"), "3");
}

class UserTypeNumericNameTest : public UserTypeFieldsTest,
                                public ::testing::WithParamInterface<NumericName>
{
};

TEST_P(UserTypeNumericNameTest, IsNotReachedByReading)
{
    declareGetter(
        GetParam().name,
        [](void*)
        {
            ADD_FAILURE() << "the getter was called";
            return FunctionParameter(7);
        });

    EXPECT_EQ(evaluate(std::string("v['") + GetParam().name + "']"), "nil");
}

TEST_P(UserTypeNumericNameTest, IsNotReachedByWriting)
{
    declareSetter(
        GetParam().name, [](const Parameters&) { ADD_FAILURE() << "the setter was called"; });

    run(std::string("v['") + GetParam().name + "'] = 7");
}

TEST_P(UserTypeNumericNameTest, GoesToArrayAccess)
{
    declareArrayAccess();

    run(std::string("v['") + GetParam().name + "'] = 7");

    EXPECT_EQ(evaluate(std::string("v['") + GetParam().name + "']"), "7");
    EXPECT_EQ(m_hostObject.x + m_hostObject.y, 7.0);
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    UserTypeNumericNameTest,
    ::testing::Values(
        NumericName{"Digit", "3"},
        NumericName{"Negative", "-1"},
        NumericName{"Fraction", "2.9"},
        NumericName{"Exponent", "1e2"},
        NumericName{"Hexadecimal", "0x10"},
        NumericName{"Blanks", " 5 "},
        NumericName{"Infinity", "inf"},
        NumericName{"NotANumber", "nan"}),
    RowName());

TEST_F(UserTypeFieldsTest, NameThatOnlyBeginsAsANumberIsReached)
{
    declareField("3d", &Vec::x);

    run("v['3d'] = 5");

    EXPECT_EQ(evaluate("v['3d']"), "5");
}

class UserTypeOtherKeyTest : public UserTypeFieldsTest,
                             public ::testing::WithParamInterface<OtherKey>
{
};

TEST_P(UserTypeOtherKeyTest, ReadsAsNil)
{
    declareArrayAccess();

    run("key = " + std::string(GetParam().key));

    EXPECT_EQ(evaluate("v[key]"), "nil");
}

TEST_P(UserTypeOtherKeyTest, CanBeWrittenWithoutEffect)
{
    declareArrayAccess();

    run("key = " + std::string(GetParam().key) + "  v[key] = 7");

    EXPECT_EQ(m_hostObject.x + m_hostObject.y, 0.0);
    EXPECT_EQ(evaluate("v[key]"), "nil");
}

INSTANTIATE_TEST_SUITE_P(
    Keys,
    UserTypeOtherKeyTest,
    ::testing::Values(
        OtherKey{"Nil", "nil"},
        OtherKey{"Bool", "true"},
        OtherKey{"Table", "{}"},
        OtherKey{"Function", "print"},
        OtherKey{"Instance", "Vec.new()"},
        OtherKey{"Coroutine", "coroutine.create(print)"},
        OtherKey{"BoxedInteger", "1LL"}),
    RowName());

TEST_F(UserTypeFieldsTest, KeyThatIsNoTextReadsTheRawEntryOfTheType)
{
    run("key = {}  Vec[key] = 'raw'  Vec[true] = 'truth'");

    EXPECT_EQ(evaluate("v[key]"), "raw");
    EXPECT_EQ(evaluate("v[true]"), "truth");
}

} // namespace tbScripts::test
