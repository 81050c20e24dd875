#include "support/UserTypeSteps.h"

#include <tbScripts/Namespace.h>

namespace tbScripts::test
{

class UserTypeClearTest : public UserTypeFixture
{
protected:
    UserTypeClearTest()
    {
        declareField("x", &Vec::x);
        declareArrayAccess();
        declareMethod("length", {}, returning(7));
        vec().setStaticMethod("origin")->setFunction(returning(8));
        vec().setOperator(BUILT_IN_FUNCTION::TOSTRING)->setFunction(returning("a vec"));
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

TEST_F(UserTypeClearTest, ConstructorAndDestructorStay)
{
    vec().clear();
    run("Vec.new()  made = nil");
    collect();
    EXPECT_THAT(m_destroyed, ::testing::UnorderedElementsAre(&m_made[0], &m_made[1]));
}

namespace
{

const char* const NO_LENGTH = "Function 'length' does not exist anymore.";

const Facts<UserTypeClearTest> FACTS(
    "UserTypeClearTest",
    {
        {"LeavesOnlyTheEntriesOfABareType",
         {clear(),
          run("names = {} for name in pairs(Vec) do names[#names + 1] = name end "
              "table.sort(names)"),
          is("table.concat(names, ' ')", "__gc __index __name __newindex disableGc enableGc new")}},
        {"MethodsReadAsNilOnInstances",
         {clear(), is("made.length", "nil"), is("made.origin", "nil")}},
        {"OperatorsAreThoseOfTheInterpreter",
         {clear(), [](auto& test) { EXPECT_THAT(test.evaluate("made"), StartsWith("userdata")); }}},
        {"FieldsReadAsNilAndAreWrittenWithoutEffect",
         {clear(), run("made.x = 'not even a number'"), is("made.x", "nil"), hasX(0, 3.0)}},
        {"ElementsReadAsNilAndAreWrittenWithoutEffect",
         {clear(), run("made[1] = 'not even a number'"), is("made[1]", "nil"), hasX(0, 3.0)}},
        {"EntriesThatAScriptPutInAMethodsPlaceGoToo",
         {run("Vec.length = 'mine'  Vec.__tostring = function() return 'mine' end"),
          clear(),
          is("Vec.length", "nil"),
          is("Vec.__tostring", "nil")}},
        {"EntriesThatAScriptMadeItselfStay",
         {run("function Vec.ext(self) return 'mine' end"), clear(), is("made:ext()", "mine")}},
        {"InstancesStayInstances",
         {clear(), isObject("made", 0), is("getmetatable(made) == Vec", "true")}},
        {"InstancesMadeBeforeSeeNewDeclarations",
         {clear(),
          field("x"),
          field("y", &Vec::y),
          arrayAccess(),
          method("length", "new"),
          is("made.x", "3"),
          is("made.y", "0"),
          is("made[1]", "3"),
          is("made:length()", "new")}},
        {"SettingAMethodAgainWarnsNoMore",
         {clear(), [](auto& test) { EXPECT_TRUE(test.vec().setMethod("length", false)); }}},
        {"AFieldMayTakeAMethodsName",
         {run("local found = made.length"), clear(), field("length"), is("made.length", "3")}},
        {"AMethodMayTakeAFieldsName", {clear(), method("x", "method"), is("made:x()", "method")}},
        {"MethodThatAScriptKeptIsAnErrorThatNamesIt",
         {run("length, origin = made.length, Vec.origin"),
          clear(),
          raises("length(made)", NO_LENGTH),
          raises("origin()", "Function 'origin' does not exist anymore.")}},
        {"MethodThatAScriptKeptStaysAnErrorWhenDeclaredAgain",
         {run("length = made.length"),
          clear(),
          method("length", "new"),
          raises("length(made)", NO_LENGTH),
          is("made:length()", "new")}},
        {"DispatchersThatAScriptKeptGoOn",
         {run("read, write = Vec.__index, Vec.__newindex"),
          clear(),
          field("y", &Vec::y),
          run("write(made, 'y', 5)"),
          is("read(made, 'y')", "5"),
          is("read(made, 'x')", "nil")}},
        {"FactoryThatAScriptKeptGoesOn",
         {run("new = Vec.new"), clear(), run("w = new()"), isObject("w", 1)}},
        {"IsSeenByLoopsThatGotHot",
         {run("function read() local x for i = 1, 1000 do x = made.x end return x end"),
          is("read()", "3"),
          clear(),
          is("read()", "nil"),
          field("x"),
          is("read()", "3")}},
        {"WritingIsSeenByLoopsThatGotHot",
         {run("function write(x) for i = 1, 1000 do made.x = x end end  write(4)"),
          clear(),
          run("write(5)"),
          hasX(0, 4.0),
          field("x", &Vec::y),
          run("write(6)"),
          [](auto& test) { EXPECT_EQ(test.m_made[0].y, 6.0); }}},
        {"DeclarationAnewEndsMethodsThatAScriptKept",
         {run("length = made.length"), declareAgain(), raises("length(made)", NO_LENGTH)}},
        {"MayBeRepeated", {clear(), clear(), is("made.x", "nil")}},
        {"EntryThatCannotBeRemovedIsLoggedAndTheMethodGone",
         {run("kept = Vec.length  Vec.length = nil "
              "setmetatable(Vec, { __newindex = function() error('no', 0) end })"),
          clear(),
          logs("no", "LuaEnvironment"),
          raises("kept(made)", NO_LENGTH),
          is("made.x", "nil")}},
        {"NamespaceOfTheSameNameTakesTheTypesEntriesButNotItsDestructor",
         {[](auto& test) { test.environment().setNamespace("Vec")->clear(); },
          run("made = nil"),
          collect(),
          is("Vec.new", "nil"),
          isDestroyed({0})}},
    });

} // namespace

} // namespace tbScripts::test
