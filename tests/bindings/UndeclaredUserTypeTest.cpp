// Objects that the host passes under the name of a user type that nobody declared.

#include "support/EnvironmentFixture.h"
#include "support/ReactingLogger.h"

#include <tbScripts/Namespace.h>
#include <tbScripts/UserType.h>

#include <string>
#include <vector>

namespace tbScripts::test
{

class UndeclaredUserTypeTest : public EnvironmentFixture
{
protected:
    UndeclaredUserTypeTest()
    {
        declare(
            "give",
            {PARAM_TYPE_STRING, PARAM_TYPE_BOOL},
            [this](const Parameters& parameters) {
                return FunctionParameter(
                    &m_object, parameters[0].getString(), parameters[1].getBool());
            });
    }

    static LogEntry reportOf(const std::string& typeName)
    {
        return {
            "User type '" + typeName +
                "' is not declared. Its instances have no methods, and scripts will not destroy "
                "them.",
            "LuaFunction"};
    }

    int m_object = 0;
};

TEST_F(UndeclaredUserTypeTest, IsReportedForAResult)
{
    run("give('Typo', true)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo")));
}

TEST_F(UndeclaredUserTypeTest, IsReportedForAnObjectThatTheHostKeeps)
{
    run("give('Typo', false)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo")));
}

TEST_F(UndeclaredUserTypeTest, IsReportedForAnInputOfAScriptCall)
{
    run("function take(instance) kind = type(instance) end");
    std::vector<FunctionParameter> results;

    call("take", {FunctionParameter(&m_object, "Typo", true)}, results);

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo")));
    EXPECT_EQ(environment().getVar("kind", ""), "userdata");
}

TEST_F(UndeclaredUserTypeTest, IsReportedForTheValueOfAField)
{
    UserType& type = *environment().setUserType("Holder");
    UserTypeFieldDescriptor field;
    field.getter = [this](void*) { return FunctionParameter(&m_object, "Typo", false); };
    field.name = "held";
    type.setField(field);
    environment().setObject("holder", "Holder", &m_object);

    run("local held = holder.held");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo")));
}

TEST_F(UndeclaredUserTypeTest, IsReportedOnceForEachName)
{
    run("for i = 1, 3 do give('Typo', true) give('Other', false) end");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo"), reportOf("Other")));
}

TEST_F(UndeclaredUserTypeTest, IsReportedInEachEnvironment)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);
    other.setFunc("give")->setFunction([this](const Parameters&)
                                       { return FunctionParameter(&m_object, "Typo", true); });

    run("give('Typo', true)");
    EXPECT_TRUE(runScript(other, "give()"));

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("Typo"), reportOf("Typo")));
}

TEST_F(UndeclaredUserTypeTest, ArrivesAsAnInstanceWithoutMetatable)
{
    run("instance = give('Typo', true)  kind = type(instance)"
        "  isBare = debug.getmetatable(instance) == nil");

    m_log.takeEntries(); // the report
    EXPECT_EQ(environment().getVar("kind", ""), "userdata");
    EXPECT_TRUE(environment().getVar("isBare", false));
}

TEST_F(UndeclaredUserTypeTest, NameOfSomethingElseInTheInterpreterIsReported)
{
    run("give('FILE*', true)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("FILE*")));
}

TEST_F(UndeclaredUserTypeTest, TypeThatWasDestroyedIsReported)
{
    environment().setUserType("world::Thing");
    run("give('world::Thing', false)");

    environment().getNamespace("world")->release();
    run("give('world::Thing', false)");

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(reportOf("world::Thing")));
}

TEST_F(UndeclaredUserTypeTest, DeclaredTypeIsNotReported)
{
    environment().setUserType("Thing");

    run("give('Thing', false)");
}

TEST_F(UndeclaredUserTypeTest, EmptyNameIsNotReported)
{
    run("give('', true)");
}

TEST_F(UndeclaredUserTypeTest, NullObjectIsNotReported)
{
    declare(
        "giveNull", {}, [](const Parameters&) { return FunctionParameter(nullptr, "Typo", true); });

    run("giveNull()");
}

TEST_F(UndeclaredUserTypeTest, GlobalObjectIsNotReported)
{
    environment().setObject("object", "Typo", &m_object);
}

TEST_F(UndeclaredUserTypeTest, EndlesslyManyNamesAreReportedForTheFirst64)
{
    run("for i = 1, 1000 do give('Typo' .. i, true) end");

    const std::vector<LogEntry> entries = m_log.takeEntries();
    ASSERT_THAT(entries, SizeIs(64));
    EXPECT_EQ(entries.back(), reportOf("Typo64"));
}

TEST_F(UndeclaredUserTypeTest, ReceiverMayUseTheEnvironment)
{
    run("function take(first, second) count = (first and 1 or 0) + (second and 1 or 0) end");
    int reactions = 0;
    ReactingLogger logger(
        [&]
        {
            if (++reactions > 1)
                return;
            run("give('Typo', true)  give('Other', true)");
            environment().requestGarbageCollection();
        });
    std::vector<FunctionParameter> results;

    call(
        "take",
        {FunctionParameter(&m_object, "Typo", true), FunctionParameter(&m_object, "Third", true)},
        results);

    EXPECT_EQ(reactions, 3);
    EXPECT_EQ(environment().getVar("count", 0), 2);
}

} // namespace tbScripts::test
