#include "core/lua/LuaErrorText.h"

#include "support/InjectedAllocator.h"
#include "support/LuaStateFixture.h"
#include "support/RowName.h"

#include <ostream>
#include <string>

namespace tbScripts::test
{

namespace
{

struct ErrorValue
{
    const char* row;
    const char* code; // returns the error value
    std::string text;
};

void PrintTo(const ErrorValue& value, std::ostream* stream) // the framework's name for this
{
    *stream << value.code;
}

} // namespace

class LuaErrorTextTest : public LuaStateFixture, public ::testing::WithParamInterface<ErrorValue>
{
};

INSTANTIATE_TEST_SUITE_P(
    Values,
    LuaErrorTextTest,
    ::testing::Values(
        ErrorValue{"Text", "return 'out of fuel'", "out of fuel"},
        ErrorValue{"EmptyText", "return ''", ""},
        ErrorValue{"TextWithAZero", "return 'a\\0b'", std::string("a\0b", 3)},
        ErrorValue{"WholeNumber", "return 42", "42"},
        ErrorValue{"NegativeFraction", "return -0.5", "-0.5"},
        ErrorValue{"LongFraction", "return 1 / 3", "0.33333333333333"},
        ErrorValue{"LargeNumber", "return 1e300", "1e+300"},
        ErrorValue{"Infinity", "return math.huge", "inf"},
        ErrorValue{"NegativeInfinity", "return -math.huge", "-inf"},
        ErrorValue{"NotANumber", "return 0/0", "nan"},
        ErrorValue{"Nil", "return nil", "(error object is a nil value)"},
        ErrorValue{"Boolean", "return false", "(error object is a boolean value)"},
        ErrorValue{"Table", "return {}", "(error object is a table value)"},
        ErrorValue{"Function", "return print", "(error object is a function value)"},
        ErrorValue{"Userdata", "return newproxy()", "(error object is a userdata value)"},
        ErrorValue{
            "Coroutine", "return coroutine.create(print)", "(error object is a thread value)"},
        ErrorValue{
            "TableWithATextOfItsOwn",
            "return setmetatable({}, { __tostring = function() return 'hidden' end })",
            "(error object is a table value)"},
        ErrorValue{
            "ForeignInteger",
            "return require('ffi').new('int64_t', 7)",
            "(error object is a cdata value)"}),
    RowName());

TEST_P(LuaErrorTextTest, GivesTheTextOrTheKind)
{
    push(GetParam().code);

    EXPECT_EQ(lua::errorTextAt(state(), -1), GetParam().text);
    lua_settop(state(), 0);
}

TEST_P(LuaErrorTextTest, AllocatesNothingInTheInterpreter)
{
    push(GetParam().code);
    InjectedAllocator allocator(state());
    allocator.refuseAfter(0);

    lua::errorTextAt(state(), -1);

    EXPECT_FALSE(allocator.hasRefused());
    allocator.allowAll();
    lua_settop(state(), 0);
}

TEST_P(LuaErrorTextTest, LeavesTheValueAsItIs)
{
    push(GetParam().code);
    const int type = lua_type(state(), -1);

    lua::errorTextAt(state(), 1);

    EXPECT_EQ(lua_gettop(state()), 1);
    EXPECT_EQ(lua_type(state(), -1), type);
    lua_settop(state(), 0);
}

} // namespace tbScripts::test
