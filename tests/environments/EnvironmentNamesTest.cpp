// Names of globals: plain keys, that end at their first NUL or with the view.

#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EnvironmentNamesTest : public EnvironmentFixture
{
};

TEST_F(EnvironmentNamesTest, DotIsPartOfTheName)
{
    run("a = {b = 1}  _G['a.b'] = 2");

    EXPECT_EQ(environment().getVar("a.b", -1), 2);
}

TEST_F(EnvironmentNamesTest, DottedNameReachesIntoNoTable)
{
    run("a = {b = 1}");

    EXPECT_FALSE(environment().isVarSet("a.b"));
}

TEST_F(EnvironmentNamesTest, DottedNameIsSetAsOneKey)
{
    run("a = {b = 1}");

    environment().setVar("a.b", 2);

    run("assert(a.b == 1 and _G['a.b'] == 2)");
}

TEST_F(EnvironmentNamesTest, SetNameEndsAtItsFirstNul)
{
    environment().setVar(tbMemory::StringView("a\0b", 3), 1);

    run("assert(a == 1 and _G['a\\0b'] == nil)");
}

TEST_F(EnvironmentNamesTest, ReadNameEndsAtItsFirstNul)
{
    run("a = 1  _G['a\\0b'] = 2");

    EXPECT_EQ(environment().getVar(tbMemory::StringView("a\0b", 3), -1), 1);
}

TEST_F(EnvironmentNamesTest, SetNameEndsWithItsView)
{
    environment().setVar(tbMemory::StringView("abc", 2), 1);

    run("assert(ab == 1 and abc == nil)");
}

TEST_F(EnvironmentNamesTest, ReadNameEndsWithItsView)
{
    run("ab = 1  abc = 2");

    EXPECT_EQ(environment().getVar(tbMemory::StringView("abc", 2), -1), 1);
}

TEST_F(EnvironmentNamesTest, EmptyNameIsAKey)
{
    environment().setVar("", 1);

    run("assert(_G[''] == 1)");
}

TEST_F(EnvironmentNamesTest, NullNameIsTheEmptyName)
{
    environment().setVar(tbMemory::StringView(), 1);

    EXPECT_EQ(environment().getVar("", -1), 1);
    EXPECT_EQ(environment().getVar(tbMemory::StringView(), -1), 1);
}

TEST_F(EnvironmentNamesTest, NameOfOnlyANulIsTheEmptyName)
{
    environment().setVar(tbMemory::StringView("\0", 1), 1);

    EXPECT_TRUE(environment().isVarSet(""));
}

TEST_F(EnvironmentNamesTest, NumericNameIsNotTheNumber)
{
    run("_G[1] = 'number'");

    EXPECT_FALSE(environment().isVarSet("1"));
}

TEST_F(EnvironmentNamesTest, ObjectNameEndsAtItsFirstNul)
{
    int object = 0;

    environment().setObject(tbMemory::StringView("a\0b", 3), "T", &object);

    EXPECT_EQ(environment().getObject("a", tbMemory::StringView()), &object);
}

TEST_F(EnvironmentNamesTest, ScriptFunctionNameEndsWithItsView)
{
    run("function ab() end");

    const ScriptObjectReference function =
        environment().getScriptFunction(tbMemory::StringView("abc", 2));

    EXPECT_EQ(function.getType(), PARAM_TYPE_SCRIPT_FUNCTION);
}

TEST_F(EnvironmentNamesTest, DottedScriptFunctionNameReachesIntoNoTable)
{
    const ScriptObjectReference function = environment().getScriptFunction("string.format");

    EXPECT_EQ(function.getInterpreterReference(), nullptr);
}

// The registry of functions keeps all bytes of a name, the script sees those before the first NUL.
TEST_F(EnvironmentNamesTest, FunctionIsRegisteredUnderAllBytesOfItsName)
{
    Function* const first = environment().setFunc(tbMemory::StringView("f\0one", 5));
    Function* const second = environment().setFunc(tbMemory::StringView("f\0two", 5));

    EXPECT_NE(first, second);
    EXPECT_EQ(environment().getFunc(tbMemory::StringView("f\0one", 5)), first);
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_TRUE(environment().isVarSet("f"));
}

TEST_F(EnvironmentNamesTest, FunctionNameEndsWithItsView)
{
    environment().setFunc(tbMemory::StringView("fgh", 1));

    EXPECT_TRUE(environment().isFuncSet("f"));
    run("assert(f and not fgh)");
}

TEST_F(EnvironmentNamesTest, FunctionMayHaveTheEmptyName)
{
    Function* const function = environment().setFunc("");

    ASSERT_NE(function, nullptr);
    EXPECT_EQ(function->getName(), "");
    run("assert(type(_G['']) == 'function')");
}

TEST_F(EnvironmentNamesTest, FunctionOfNullNameIsThatOfTheEmptyName)
{
    Function* const function = environment().setFunc(tbMemory::StringView());

    EXPECT_NE(function, nullptr);
    EXPECT_EQ(environment().getFunc(""), function);
    EXPECT_TRUE(environment().isFuncSet(tbMemory::StringView()));
}

TEST_F(EnvironmentNamesTest, FunctionNameIsNotSplitAtColons)
{
    Function* const function = environment().setFunc("a::b::f");

    EXPECT_EQ(environment().getFunc("a::b::f"), function);
    EXPECT_FALSE(environment().isFuncSet("f"));
    EXPECT_FALSE(environment().isVarSet("a"));
    run("assert(type(_G['a::b::f']) == 'function')");
}

TEST_F(EnvironmentNamesTest, RepeatedDeclarationIsLoggedWithAllBytesOfTheName)
{
    environment().setFunc(tbMemory::StringView("f\0one", 5));

    environment().setFunc(tbMemory::StringView("f\0one", 5));

    const std::string name("f\0one", 5);
    EXPECT_THAT(
        m_log.takeEntries(),
        ElementsAre(LogEntry{
            "Function '" + name +
                "' already existant. Resetting its state before returning it. This might break "
                "previous usage of the function.",
            "Environment"}));
}

} // namespace tbScripts::test
