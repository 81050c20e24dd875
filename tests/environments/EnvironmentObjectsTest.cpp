// Host objects as globals, as far as they need no declared type.

#include "support/CountedObject.h"
#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

// An expression; the interpreter itself makes such values here only.
constexpr const char* LIGHT_USERDATA =
    "(function() local x  return debug.upvalueid(function() return x end, 1) end)()";

class EnvironmentObjectsTest : public EnvironmentFixture
{
protected:
    int m_object = 0;
};

TEST_F(EnvironmentObjectsTest, ObjectIsSeenAsUserdata)
{
    environment().setObject("v", "T", &m_object);

    run("assert(type(v) == 'userdata')");
}

TEST_F(EnvironmentObjectsTest, ObjectOfUnknownTypeHasNoMetatable)
{
    environment().setObject("v", "T", &m_object);

    run("assert(debug.getmetatable(v) == nil)");
}

TEST_F(EnvironmentObjectsTest, ObjectOfUnknownTypeIsNoInstanceOfIt)
{
    environment().setObject("v", "T", &m_object);

    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
}

TEST_F(EnvironmentObjectsTest, TypeNameOfSomethingElseInTheRegistryGivesNoMetatable)
{
    environment().setObject("v", "FILE*", &m_object);

    run("assert(debug.getmetatable(v) == nil)");
}

TEST_F(EnvironmentObjectsTest, NullTypeNameGivesNoMetatable)
{
    environment().setObject("v", tbMemory::StringView(), &m_object);

    run("assert(debug.getmetatable(v) == nil)");
    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), &m_object);
}

TEST_F(EnvironmentObjectsTest, NullTypeNameReadsAnyObject)
{
    environment().setObject("v", "T", &m_object);

    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), &m_object);
}

// Null skips the test of the type; empty is the name of a type, which is not this one's.
TEST_F(EnvironmentObjectsTest, EmptyTypeNameIsNotTheNullOne)
{
    environment().setObject("v", "T", &m_object);

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

    EXPECT_NE(environment().getObject("v", tbMemory::StringView()), nullptr);
    EXPECT_EQ(environment().getObject("v", "FILE*"), nullptr);
}

// Tables can say anything in "__name"; only the types of the host are believed.
TEST_F(EnvironmentObjectsTest, NameWrittenByAScriptMakesNoInstance)
{
    run("v = newproxy(true)  getmetatable(v).__name = 'T'");

    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
}

namespace
{

struct NoObjectRow
{
    const char* name;
    const char* value; // an expression
};

void PrintTo(const NoObjectRow& row, std::ostream* stream)
{
    *stream << row.name;
}

} // namespace

class EnvironmentNoObjectTest : public EnvironmentFixture,
                                public ::testing::WithParamInterface<NoObjectRow>
{
protected:
    void SetUp() override { run(std::string("v = ") + GetParam().value); }
};

TEST_P(EnvironmentNoObjectTest, IsNullForATypeName)
{
    EXPECT_EQ(environment().getObject("v", "T"), nullptr);
}

TEST_P(EnvironmentNoObjectTest, IsNullWithoutATypeName)
{
    EXPECT_EQ(environment().getObject("v", tbMemory::StringView()), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Values,
    EnvironmentNoObjectTest,
    ::testing::Values(
        NoObjectRow{"Nil", "nil"},
        NoObjectRow{"Bool", "true"},
        NoObjectRow{"Number", "1"},
        NoObjectRow{"Text", "'T'"},
        NoObjectRow{"Table", "{}"},
        NoObjectRow{"TableWithName", "setmetatable({}, {__name = 'T'})"},
        NoObjectRow{"Function", "print"},
        NoObjectRow{"Coroutine", "coroutine.create(print)"},
        NoObjectRow{"EmptyBlock", "newproxy()"},
        NoObjectRow{"LightUserdata", LIGHT_USERDATA},
        NoObjectRow{"ForeignInteger", "1LL"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace tbScripts::test
