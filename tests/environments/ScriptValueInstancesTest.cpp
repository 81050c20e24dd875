// Instances of user types as bytes: their record, and who destroys the object afterwards.

#include "support/ScriptValueFixture.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

namespace
{

constexpr bool TRANSFER = true;

} // namespace

class ScriptValueInstancesTest : public ScriptValueFixture
{
protected:
    // Returns the record of an instance of `Vec`.
    static Bytes recordOf(const Vec* object, unsigned char flag)
    {
        return joined({{'u', flag, 's', 'V', 'e', 'c', 0, 0, 0, 0, 0, 0}, bytesOf(object)});
    }

    // Lets go of the globals that the fixture works with, and collects.
    void dropAll()
    {
        run("written, read = nil, nil");
        collect();
    }
};

TEST_F(ScriptValueInstancesTest, RecordHoldsTypePointerAndWhetherOwnershipWasAskedFor)
{
    setHostObject("v", m_hostObject);

    EXPECT_EQ(write("v"), recordOf(&m_hostObject, 0));
    EXPECT_EQ(write("v", TRANSFER), recordOf(&m_hostObject, 1));
    EXPECT_EQ(
        write("{v = v}"),
        joined({{'{', 0, 0, 0, 'k', 'v', 0, 0}, recordOf(&m_hostObject, 0), {'}', 0, 0, 0}}));
}

TEST_F(ScriptValueInstancesTest, RecordHoldsTheFullNameOfANamespacedType)
{
    environment().setNamespace("geo")->setUserType("V");
    environment().setObject("v", "geo::V", &m_hostObject);

    EXPECT_EQ(
        write("v"),
        joined({{'u', 0, 's', 'g', 'e', 'o', ':', ':', 'V', 0, 0, 0}, bytesOf(&m_hostObject)}));
}

TEST_F(ScriptValueInstancesTest, RecordHoldsTheNameOfTheTypeWhateverAScriptCallsIt)
{
    setHostObject("v", m_hostObject);
    run("Vec.__name = 'Another name'");

    EXPECT_EQ(write("v"), recordOf(&m_hostObject, 0));
}

TEST_F(ScriptValueInstancesTest, RecordWithoutTypeHoldsThePointerAndNoFlag)
{
    environment().setObject("v", "Unknown", &m_hostObject);

    EXPECT_EQ(write("v", TRANSFER), joined({{'u', 0, 0, 0}, bytesOf(&m_hostObject)}));
}

TEST_F(ScriptValueInstancesTest, RecordOfADestroyedInstanceHoldsNoPointer)
{
    run("v = Vec.new()  debug.getmetatable(v).__gc(v)");

    EXPECT_EQ(write("v", TRANSFER), recordOf(nullptr, 1));
}

TEST_F(ScriptValueInstancesTest, RecordOfForeignUserdataHoldsNothing)
{
    for (const char* value : {"io.stdout", "newproxy()", "newproxy(true)"})
        EXPECT_EQ(write(value, TRANSFER), (Bytes{'u', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0})) << value;
}

TEST_F(ScriptValueInstancesTest, InstancesComeBackWithTheirTypes)
{
    declareField("x", &Vec::x);
    declareType("V");
    setHostObject("v", m_hostObject);
    environment().setObject("w", "V", &m_hostObject);
    m_hostObject.x = 12;

    ASSERT_TRUE(read(write("v")));
    EXPECT_EQ(evaluate("read.x"), "12");
    EXPECT_EQ(environment().getObject("read", "Vec"), &m_hostObject);
    ASSERT_TRUE(read(write("{v, a = {w, v}, last = true}")));

    run("first, second, third = read[1], read.a[1], read.a[2]");
    EXPECT_EQ(environment().getObject("first", "Vec"), &m_hostObject);
    EXPECT_EQ(environment().getObject("second", "V"), &m_hostObject);
    EXPECT_EQ(environment().getObject("third", "Vec"), &m_hostObject);
    EXPECT_TRUE(holds("read.last"));
}

TEST_F(ScriptValueInstancesTest, InstanceOfAnUnknownTypeComesBackWithoutType)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    setHostObject("v", m_hostObject);

    other.setVar("read", other.deserializeScriptObject(write("{a = v, last = true}")));

    EXPECT_TRUE(runScript(other, "assert(read.last)  object = read.a"));
    EXPECT_TRUE(runScript(other, "assert(debug.getmetatable(object) == nil)"));
    EXPECT_EQ(other.getObject("object", tbMemory::StringView()), &m_hostObject);
}

TEST_F(ScriptValueInstancesTest, TypeThatNamesSomethingElseIsUnknown)
{
    ASSERT_TRUE(read(joined(
        {{'u', 1, 's', '_', 'L', 'O', 'A', 'D', 'E', 'D', 0, 0, 0, 0, 0, 0},
         bytesOf(&m_hostObject)})));

    EXPECT_TRUE(holds("debug.getmetatable(read) == nil"));
    EXPECT_TRUE(holds("type(read) == 'userdata'"));
}

TEST_F(ScriptValueInstancesTest, PointerOfARecordWithoutTypeIsReadAtItsEighthByte)
{
    environment().setObject("v", "Unknown", &m_hostObject);
    ASSERT_TRUE(read(write("v")));
    EXPECT_TRUE(holds("type(read) == 'userdata'"));
    EXPECT_EQ(environment().getObject("read", tbMemory::StringView()), nullptr);
    ASSERT_TRUE(read(write("{v, 'after'}")));
    EXPECT_TRUE(holds("type(read[1]) == 'userdata' and read[2] == 'after'"));

    ASSERT_TRUE(read(joined({{'u', 0, 0, 0, 1, 2, 3, 4}, bytesOf(&m_hostObject)})));

    EXPECT_EQ(environment().getObject("read", tbMemory::StringView()), &m_hostObject);
}

TEST_F(ScriptValueInstancesTest, SecondByteOfTheNameRecordDoesNotMatter)
{
    Bytes bytes = recordOf(&m_hostObject, 0);
    bytes[2] = 'x';

    ASSERT_TRUE(read(bytes));

    EXPECT_EQ(environment().getObject("read", "Vec"), &m_hostObject);
}

TEST_F(ScriptValueInstancesTest, TypeWithoutAnyNameIsATypeOfItsOwn)
{
    declareType("");
    environment().setObject("v", "", &m_hostObject);
    environment().setObject("w", "Unknown", &m_hostObject);

    const Bytes bytes = write("v");
    ASSERT_TRUE(read(write("{v, w, true}")));

    EXPECT_EQ(bytes, joined({{'u', 0, 's', 0, 0, 0, 0, 0}, bytesOf(&m_hostObject)}));
    run("named, unnamed = read[1], read[2]");
    EXPECT_EQ(environment().getObject("named", ""), &m_hostObject);
    EXPECT_TRUE(holds("debug.getmetatable(unnamed) == nil and read[3] == true"));
}

TEST_F(ScriptValueInstancesTest, PointerThatIsNotThereAsAWholeIsNullAndNullIsOwnedByNobody)
{
    Bytes cut = recordOf(&m_hostObject, 1);
    cut.pop_back();

    for (const Bytes& bytes : {cut, recordOf(nullptr, 1)})
    {
        ASSERT_TRUE(read(bytes));
        EXPECT_EQ(environment().getObject("read", "Vec"), nullptr);
        dropAll();
        EXPECT_THAT(m_destroyed, IsEmpty());
    }
}

TEST_F(ScriptValueInstancesTest, ObjectStaysWithItsInstanceWithoutTransfer)
{
    ASSERT_TRUE(read(write("Vec.new()")));

    run("read = nil");
    collect();
    EXPECT_THAT(m_destroyed, IsEmpty());

    dropAll();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ScriptValueInstancesTest, ObjectsAtAnyDepthGoWithTheBytes)
{
    const Bytes bytes =
        write("{Vec.new(), {Vec.new(), a = {b = {Vec.new()}}}, function() end}", TRANSFER);

    dropAll();
    EXPECT_THAT(m_destroyed, IsEmpty());

    ASSERT_TRUE(read(bytes));
    dropAll();
    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_made[0], &m_made[1], &m_made[2]));
}

TEST_F(ScriptValueInstancesTest, ObjectGoesToAnotherEnvironment)
{
    auto other = std::make_unique<Environment>();
    other->setEnvironmentFor(INTERPRETER_LUA);
    setMaker(*other->setUserType("Vec"));
    const Bytes bytes = write("Vec.new()", TRANSFER);

    other->setVar("read", other->deserializeScriptObject(bytes));
    dropAll();
    EXPECT_THAT(m_destroyed, IsEmpty());

    other.reset();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ScriptValueInstancesTest, OnlyTheFirstOfSeveralInstancesOwnsTheObject)
{
    run("v = Vec.new()");
    const Bytes bytes = write("{v, v, {v}}", TRANSFER);
    run("v = nil");

    ASSERT_TRUE(read(bytes));
    run("first = read[1]  read = {read[2], read[3][1]}");
    collect();
    EXPECT_THAT(m_destroyed, IsEmpty());

    run("first = nil");
    collect();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
    dropAll();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ScriptValueInstancesTest, FlagIsKeptThoughTheHostOwnsTheObject)
{
    setHostObject("v", m_hostObject);

    ASSERT_TRUE(read(write("v", TRANSFER)));
    dropAll();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_hostObject));
}

TEST_F(ScriptValueInstancesTest, ObjectWithoutTypeIsOwnedByNobodyAfterwards)
{
    run("v = Vec.new()  meta = debug.getmetatable(v)  debug.setmetatable(v, nil)");

    write("v", TRANSFER);
    run("debug.setmetatable(v, meta)  v = nil");
    dropAll();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(ScriptValueInstancesTest, InstanceThatIsNotOwnedStaysSo)
{
    run("v = Vec.new()  v:disableGc()");

    ASSERT_TRUE(read(write("v")));
    run("v = nil");
    dropAll();

    EXPECT_THAT(m_destroyed, IsEmpty());
}

TEST_F(ScriptValueInstancesTest, BytesThatCannotBeReadHandNothingOver)
{
    Bytes bytes = write("{Vec.new(), 'text'}", TRANSFER);
    const Bytes whole = bytes;
    bytes.resize(bytes.size() - 4);

    EXPECT_FALSE(read(bytes));
    dropAll();
    EXPECT_THAT(m_destroyed, IsEmpty());

    ASSERT_TRUE(read(whole));
    dropAll();
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

TEST_F(ScriptValueInstancesTest, ObjectOfADroppedPairIsDestroyed)
{
    const Bytes bytes = write("{nan = Vec.new(), a = {nan = {Vec.new()}}}", TRANSFER);

    ASSERT_TRUE(read(bytes));
    dropAll();

    EXPECT_THAT(m_destroyed, UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(ScriptValueInstancesTest, BytesThatAreReadTwiceHandTheObjectOverTwice)
{
    const Bytes bytes = write("Vec.new()", TRANSFER);

    ASSERT_TRUE(read(bytes));
    ASSERT_TRUE(read(bytes));
    dropAll();

    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0], &m_made[0]));
}

TEST_F(ScriptValueInstancesTest, ManyInstancesGoWithTheBytes)
{
    const Bytes bytes = write(
        "(function() local t = {} for i = 1, 1000 do t[i] = {Vec.new()} end return t end)()",
        TRANSFER);

    ASSERT_TRUE(read(bytes));
    dropAll();

    EXPECT_EQ(m_destroyed.size(), 1000U);
}

TEST_F(ScriptValueInstancesTest, InstancesBelowManyTablesGoWithTheBytes)
{
    const Bytes bytes = write(
        "(function() local t = {Vec.new()} for i = 1, 200 do t = {t, Vec.new()} end return t "
        "end)()",
        TRANSFER);

    ASSERT_TRUE(read(bytes));
    EXPECT_TRUE(holds("(function() local depth, t = 0, read"
                      " while type(t) == 'table' do depth, t = depth + 1, t[1] end"
                      " return depth end)() == 201"));
    dropAll();

    EXPECT_EQ(m_destroyed.size(), 201U);
}

} // namespace tbScripts::test
