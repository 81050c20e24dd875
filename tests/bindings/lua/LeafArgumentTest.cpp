// What a leaf takes, and what it leaves to the C function around which it is put.

#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/LeafFixture.h"

#include <cmath>
#include <limits>

namespace tbScripts::test
{

namespace
{

using typed::KIND;
using typed::LeafGuard;
using typed::Parameter;
using typed::Text;

struct ArgumentRow
{
    const char* row;
    Parameter parameter;
    const char* arguments;
    const char* expected;
};

constexpr Parameter FLAG{KIND::BOOL};
constexpr Parameter INTEGER{KIND::INT};
constexpr Parameter SMALL{KIND::FLOAT};
constexpr Parameter NUMBER{KIND::DOUBLE};
constexpr Parameter STRING{KIND::TEXT};
constexpr Parameter OBJECT{KIND::OBJECT};
constexpr Parameter OR_NIL{KIND::OBJECT_OR_NIL};
constexpr Parameter OR_NOTHING{KIND::OBJECT_OR_NIL, true};

class LeafArgumentTest : public OnRows<LeafFixture, ArgumentRow>
{
protected:
    LeafArgumentTest()
    {
        Parameter parameter = GetParam().parameter;
        if (parameter.kind == KIND::OBJECT || parameter.kind == KIND::OBJECT_OR_NIL)
            parameter.type = &BODY;
        EXPECT_TRUE(publishWith(parameter));
    }

    std::string m_call = std::string("f(") + GetParam().arguments + ")";
};

} // namespace

TEST_P(LeafArgumentTest, IsTakenIfItFits)
{
    EXPECT_EQ(compiled(m_call), GetParam().expected);
}

TEST_P(LeafArgumentTest, IsLeftToTheFunctionWithoutCompiler)
{
    EXPECT_EQ(uncompiled(m_call), "slow");
}

ROWS(
    LeafArgumentTest,
    {"True", FLAG, "true", "leaf 1"},
    {"False", FLAG, "false", "leaf 0"},
    {"StringForBool", FLAG, "''", "leaf 1"},
    {"NilForBool", FLAG, "nil", "slow"},
    {"NothingForBool", FLAG, "", "slow"},
    {"Integer", INTEGER, "7", "leaf 7"},
    {"Fraction", INTEGER, "2.75", "leaf 2"},
    {"NegativeFraction", INTEGER, "-2.75", "leaf -2"},
    {"HighestInteger", INTEGER, "2147483647", "leaf 2147483647"},
    {"BeyondIntegers", INTEGER, "2147483648", "slow"},
    {"LowestInteger", INTEGER, "-2147483648", "leaf -2147483648"},
    {"BelowIntegers", INTEGER, "-2147483649", "slow"},
    {"NanForInteger", INTEGER, "0/0", "slow"},
    {"StringForInteger", INTEGER, "'7'", "slow"},
    {"Float", SMALL, "0.5", "leaf 0.500000"},
    {"BeyondFloats", SMALL, "1e300", "leaf inf"},
    {"StringForFloat", SMALL, "'1'", "slow"},
    {"Double", NUMBER, "0.25", "leaf 0.250000"},
    {"Infinite", NUMBER, "-1/0", "leaf -inf"},
    {"StringForDouble", NUMBER, "'1'", "slow"},
    {"NothingForDouble", NUMBER, "", "slow"},
    {"OneTooMany", NUMBER, "1, 2", "leaf 1.000000"},
    {"String", STRING, "'abc'", "leaf 3 abc"},
    {"EmptyString", STRING, "''", "leaf 0 "},
    {"NumberForString", STRING, "1", "slow"},
    {"Instance", OBJECT, "body", "leaf 0.500000"},
    {"NilForInstance", OBJECT, "nil", "slow"},
    {"TableForInstance", OBJECT, "{}", "slow"},
    {"StringForInstance", OBJECT, "'body'", "slow"},
    {"FileForInstance", OBJECT, "io.stdout", "slow"},
    {"InstanceOrNil", OR_NIL, "body", "leaf 0.500000"},
    {"NilOfInstanceOrNil", OR_NIL, "nil", "leaf null"},
    {"NothingForInstanceOrNil", OR_NIL, "", "slow"},
    {"TableForInstanceOrNil", OR_NIL, "{}", "slow"},
    {"OptionalInstance", OR_NOTHING, "body", "leaf 0.500000"},
    {"NothingForOptionalInstance", OR_NOTHING, "", "leaf null"});

namespace
{

int noNumber(lua_State* state)
{
    lua_pushnumber(state, -1);
    return 1;
}

double sumUp(
    LeafGuard* /*guard*/,
    double a,
    int b,
    const char* text,
    std::size_t size,
    float c,
    void* object,
    int flag,
    int d,
    double e,
    void* none)
{
    return a + b + static_cast<double>(std::string(text, size).size()) + static_cast<double>(c) +
           static_cast<LeafFixture::Body*>(object)->number + flag + d + e + (none ? 1000 : 0);
}

int yes(LeafGuard* /*guard*/)
{
    return 1;
}

int minusOne(LeafGuard* /*guard*/)
{
    return -1;
}

float half(LeafGuard* /*guard*/)
{
    return 0.5F;
}

void nothing(LeafGuard* /*guard*/) {}

void noText(LeafGuard* /*guard*/, Text* out)
{
    *out = {nullptr, 0};
}

void zeroByte(LeafGuard* /*guard*/, Text* out)
{
    *out = {"a\0b", 3};
}

void emptyText(LeafGuard* /*guard*/, Text* out)
{
    *out = {"", 0};
}

} // namespace

using LeafTest = LeafFixture;

TEST_F(LeafTest, TakesManyArgumentsOfAllKinds)
{
    publish(
        "sum",
        &noNumber,
        entryOf(&sumUp),
        {NUMBER,
         NUMBER,
         INTEGER,
         STRING,
         SMALL,
         {KIND::OBJECT, false, &BODY},
         FLAG,
         INTEGER,
         NUMBER,
         {KIND::OBJECT_OR_NIL, false, &BODY}});
    EXPECT_EQ(compiled("sum(1, 2, 'abc', 0.25, body, true, 5, 6, nil)"), "18.75");
    EXPECT_EQ(compiled("sum(1, 2, 'abc', 0.25, body, true, 5, 6, body)"), "1018.75");
    EXPECT_EQ(compiled("sum(1, 2, 'abc', 0.25, body, true, 5, 'x', nil)"), "-1");
    EXPECT_EQ(compiled("sum(1, 2, 'abc', 0.25, body, true, 5)"), "-1");
}

TEST_F(LeafTest, ReturnsWhatItsKindSays)
{
    publish("yes", &noNumber, entryOf(&yes), {FLAG});
    publish("minusOne", &noNumber, entryOf(&minusOne), {INTEGER});
    publish("half", &noNumber, entryOf(&half), {SMALL});
    publish("nothing", &noNumber, entryOf(&nothing), {{KIND::NOTHING}});
    publish("noText", &noNumber, entryOf(&noText), {STRING});
    publish("zeroByte", &noNumber, entryOf(&zeroByte), {STRING});
    publish("emptyText", &noNumber, entryOf(&emptyText), {STRING});
    EXPECT_EQ(compiled("yes()"), "true");
    EXPECT_EQ(compiled("minusOne()"), "-1");
    EXPECT_EQ(compiled("half()"), "0.5");
    EXPECT_EQ(compiled("select('#', nothing())"), "0");
    EXPECT_EQ(compiled("noText()"), "nil");
    EXPECT_EQ(compiled("select('#', noText())"), "1");
    EXPECT_EQ(compiled("zeroByte()"), std::string("a\0b", 3));
    EXPECT_EQ(compiled("emptyText()"), "");
}

TEST_F(LeafTest, IsNotMadeOfWhatItCannotPass)
{
    EXPECT_FALSE(publish("f", &noNumber, entryOf(&half), {NUMBER, {KIND::DOUBLE, true}}));
    EXPECT_FALSE(publish("f", &noNumber, entryOf(&half), {NUMBER, {KIND::OTHER}}));
    EXPECT_FALSE(publish("f", &noNumber, entryOf(&half), {NUMBER, {KIND::FUNCTION}}));
    EXPECT_FALSE(publish("f", &noNumber, entryOf(&half), {{KIND::OBJECT}, NUMBER}));
    EXPECT_FALSE(publish("f", &noNumber, nullptr, {NUMBER}));
    EXPECT_FALSE(
        publish("f", &noNumber, entryOf(&half), std::vector<Parameter>(100, Parameter{NUMBER})));
    EXPECT_EQ(run("return f()"), "-1");
}

TEST_F(LeafTest, RunsOnlyWhileItsWordIsNotNull)
{
    const void* word = &word;
    publish("half", &noNumber, entryOf(&half), {SMALL}, &word);
    EXPECT_EQ(compiled("half()"), "0.5");
    run("function check() local r for i = 1, 300 do r = half() end return r end check()");
    word = nullptr;
    EXPECT_EQ(run("return check()"), "-1");
    EXPECT_EQ(compiled("half()"), "-1");
}

// Functions that have their bytecode in common are no constants for the compiler.
TEST_F(LeafTest, IsCompiledHoweverManyThereAre)
{
    for (int i = 0; i < 20; ++i)
        publish("half" + std::to_string(i), &noNumber, entryOf(&half), {SMALL});
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(compiled("half" + std::to_string(i) + "()"), "0.5");
}

TEST_F(LeafTest, OnesOfOneShapeDifferInWhatTheyCall)
{
    publish("yes", &noNumber, entryOf(&yes), {INTEGER});
    publish("minusOne", &noNumber, entryOf(&minusOne), {INTEGER});
    EXPECT_EQ(compiled("yes() + 10 * minusOne()"), "-9");
}

TEST_F(LeafTest, OutlivesCollections)
{
    publish("half", &noNumber, entryOf(&half), {SMALL});
    run("collectgarbage() collectgarbage()");
    EXPECT_EQ(compiled("half()"), "0.5");
    run("half = nil collectgarbage() jit.flush() collectgarbage()");
    publish("half", &noNumber, entryOf(&half), {SMALL});
    EXPECT_EQ(compiled("half()"), "0.5");
}

TEST_F(LeafTest, IsCompiledAgainAfterTheCompilerWasOff)
{
    publish("half", &noNumber, entryOf(&half), {SMALL});
    EXPECT_EQ(uncompiled("half()"), "-1");
    run("jit.on()");
    EXPECT_EQ(compiled("half()"), "0.5");
}

} // namespace tbScripts::test
