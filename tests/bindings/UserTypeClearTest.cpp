#include "support/UserTypeFixture.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

using ::testing::ElementsAre;

class UserTypeClearTest : public UserTypeFixture
{
protected:
    UserTypeClearTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod("length", {}, [](const Parameters&) { return 7; });
        vec().setStaticMethod("origin")->setFunction([](const Parameters&) { return 8; });
        vec()
            .setOperator(BUILT_IN_FUNCTION::TOSTRING)
            ->setFunction([](const Parameters&) { return "a vec"; });
        setHostObject("v", m_hostObject);
        run("made = Vec.new()  made.x = 3");
    }
};

TEST_F(UserTypeClearTest, ForgetsMethodsAndOperators)
{
    vec().clear();

    EXPECT_EQ(vec().getMethod("length"), nullptr);
    EXPECT_EQ(vec().getStaticMethod("origin"), nullptr);
    EXPECT_EQ(vec().getMethod("__tostring"), nullptr);
    EXPECT_EQ(vec().getMethod("__arrayRead"), nullptr);
}

TEST_F(UserTypeClearTest, LeavesOnlyTheEntriesOfABareType)
{
    vec().clear();

    run("names = {} for name in pairs(Vec) do names[#names + 1] = name end table.sort(names)");
    EXPECT_EQ(
        evaluate("table.concat(names, ' ')"),
        "__gc __index __name __newindex disableGc enableGc new");
}

TEST_F(UserTypeClearTest, MethodsReadAsNilOnInstances)
{
    vec().clear();

    EXPECT_EQ(evaluate("made.length"), "nil");
    EXPECT_EQ(evaluate("made.origin"), "nil");
}

TEST_F(UserTypeClearTest, OperatorsAreThoseOfTheInterpreter)
{
    vec().clear();

    EXPECT_EQ(evaluate("made").substr(0, 8), "userdata");
}

TEST_F(UserTypeClearTest, FieldsReadAsNilAndAreWrittenWithoutEffect)
{
    vec().clear();

    run("made.x = 'not even a number'");

    EXPECT_EQ(evaluate("made.x"), "nil");
    EXPECT_EQ(m_made[0].x, 3.0);
}

TEST_F(UserTypeClearTest, ElementsReadAsNilAndAreWrittenWithoutEffect)
{
    vec().clear();

    run("made[1] = 'not even a number'");

    EXPECT_EQ(evaluate("made[1]"), "nil");
    EXPECT_EQ(m_made[0].x, 3.0);
}

TEST_F(UserTypeClearTest, EntriesThatAScriptPutInAMethodsPlaceGoToo)
{
    run("Vec.length = 'mine'  Vec.__tostring = function() return 'mine' end");

    vec().clear();

    EXPECT_EQ(evaluate("Vec.length"), "nil");
    EXPECT_EQ(evaluate("Vec.__tostring"), "nil");
}

TEST_F(UserTypeClearTest, EntriesThatAScriptMadeItselfStay)
{
    run("function Vec.ext(self) return 'mine' end");

    vec().clear();

    EXPECT_EQ(evaluate("made:ext()"), "mine");
}

TEST_F(UserTypeClearTest, ConstructorAndDestructorStay)
{
    vec().clear();

    run("Vec.new()  made = nil");
    collect();

    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAre(&m_made[0], &m_made[1]));
}

TEST_F(UserTypeClearTest, InstancesStayInstances)
{
    vec().clear();

    EXPECT_EQ(environment().getObject("made", "Vec"), &m_made[0]);
    EXPECT_EQ(evaluate("getmetatable(made) == Vec"), "true");
}

TEST_F(UserTypeClearTest, InstancesMadeBeforeSeeNewDeclarations)
{
    vec().clear();

    declareField("x", &Vec::x);
    declareField("y", &Vec::y);
    declareArrayAccess();
    declareMethod("length", {}, [](const Parameters&) { return "new"; });

    EXPECT_EQ(evaluate("made.x"), "3");
    EXPECT_EQ(evaluate("made.y"), "0");
    EXPECT_EQ(evaluate("made[1]"), "3");
    EXPECT_EQ(evaluate("made:length()"), "new");
}

TEST_F(UserTypeClearTest, SettingAMethodAgainWarnsNoMore)
{
    vec().clear();

    EXPECT_NE(vec().setMethod("length", false), nullptr);
}

TEST_F(UserTypeClearTest, AFieldMayTakeAMethodsName)
{
    run("local found = made.length");
    vec().clear();

    declareField("length", &Vec::x);

    EXPECT_EQ(evaluate("made.length"), "3");
}

TEST_F(UserTypeClearTest, AMethodMayTakeAFieldsName)
{
    vec().clear();

    declareMethod("x", {}, [](const Parameters&) { return "method"; });

    EXPECT_EQ(evaluate("made:x()"), "method");
}

TEST_F(UserTypeClearTest, MethodThatAScriptKeptIsAnErrorThatNamesIt)
{
    run("length, origin = made.length, Vec.origin");

    vec().clear();

    EXPECT_EQ(errorOf("length(made)"), "Function 'length' does not exist anymore.");
    EXPECT_EQ(errorOf("origin()"), "Function 'origin' does not exist anymore.");
}

TEST_F(UserTypeClearTest, MethodThatAScriptKeptStaysAnErrorWhenDeclaredAgain)
{
    run("length = made.length");
    vec().clear();

    declareMethod("length", {}, [](const Parameters&) { return "new"; });

    EXPECT_EQ(errorOf("length(made)"), "Function 'length' does not exist anymore.");
    EXPECT_EQ(evaluate("made:length()"), "new");
}

TEST_F(UserTypeClearTest, DispatchersThatAScriptKeptGoOn)
{
    run("read, write = Vec.__index, Vec.__newindex");
    vec().clear();

    declareField("y", &Vec::y);
    run("write(made, 'y', 5)");

    EXPECT_EQ(evaluate("read(made, 'y')"), "5");
    EXPECT_EQ(evaluate("read(made, 'x')"), "nil");
}

TEST_F(UserTypeClearTest, FactoryThatAScriptKeptGoesOn)
{
    run("new = Vec.new");
    vec().clear();

    run("w = new()");

    EXPECT_EQ(environment().getObject("w", "Vec"), &m_made[1]);
}

TEST_F(UserTypeClearTest, IsSeenByLoopsThatGotHot)
{
    run("function read() local x for i = 1, 1000 do x = made.x end return x end");
    EXPECT_EQ(evaluate("read()"), "3");

    vec().clear();

    EXPECT_EQ(evaluate("read()"), "nil");
    declareField("x", &Vec::x);
    EXPECT_EQ(evaluate("read()"), "3");
}

TEST_F(UserTypeClearTest, WritingIsSeenByLoopsThatGotHot)
{
    run("function write(x) for i = 1, 1000 do made.x = x end end  write(4)");

    vec().clear();
    run("write(5)");

    EXPECT_EQ(m_made[0].x, 4.0);
    declareField("x", &Vec::y);
    run("write(6)");
    EXPECT_EQ(m_made[0].y, 6.0);
}

TEST_F(UserTypeClearTest, DeclarationAnewEndsMethodsThatAScriptKept)
{
    run("length = made.length");

    environment().setUserType("Vec");
    m_log.takeEntries(); // that it was declared already

    EXPECT_EQ(errorOf("length(made)"), "Function 'length' does not exist anymore.");
}

TEST_F(UserTypeClearTest, MayBeRepeated)
{
    vec().clear();

    vec().clear();

    EXPECT_EQ(evaluate("made.x"), "nil");
}

TEST_F(UserTypeClearTest, EntryThatCannotBeRemovedIsLoggedAndTheMethodGone)
{
    run("kept = Vec.length  Vec.length = nil "
        "setmetatable(Vec, { __newindex = function() error('no', 0) end })");

    vec().clear();

    EXPECT_THAT(m_log.takeEntries(), ElementsAre(LogEntry{"no", "LuaEnvironment"}));
    EXPECT_EQ(errorOf("kept(made)"), "Function 'length' does not exist anymore.");
    EXPECT_EQ(evaluate("made.x"), "nil");
}

TEST_F(UserTypeClearTest, NamespaceOfTheSameNameTakesTheTypesEntriesButNotItsDestructor)
{
    Namespace* const scope = environment().setNamespace("Vec");

    scope->clear();
    run("made = nil");
    collect();

    EXPECT_EQ(evaluate("Vec.new"), "nil");
    EXPECT_THAT(m_destroyed, ElementsAre(&m_made[0]));
}

} // namespace tbScripts::test
