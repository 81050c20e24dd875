// Values written as bytes and read back: single ones, from one environment to another, and a large
// generated set that is the same in every run.

#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "support/ScriptValueFixture.h"

namespace tbScripts::test
{

namespace
{

// `same(a, b)`: whether two values are equal, tables by what is in them and numbers to the last
// bit. Works at any depth.
constexpr const char* COMPARISON = R"(
    local function isSamePlain(a, b)
        if type(a) ~= type(b) then return false end
        if a ~= a then return b ~= b end
        return a == b and (a ~= 0 or 1 / a == 1 / b)
    end
    local function count(t)
        local n = 0
        for _ in pairs(t) do n = n + 1 end
        return n
    end
    function same(a, b)
        local left, right, n = {a}, {b}, 1
        while n > 0 do
            local x, y = left[n], right[n]
            n = n - 1
            if type(x) == 'table' and type(y) == 'table' then
                if count(x) ~= count(y) then return false end
                for key, value in pairs(x) do
                    n = n + 1
                    left[n], right[n] = value, y[key]
                    if y[key] == nil then return false end
                end
            elseif not isSamePlain(x, y) then
                return false
            end
        end
        return true
    end)";

// `make()` sets `value` to the next value, `expected` to what is read back, and `isOrdered` if its
// bytes are the same when they are written again. `random(n)` is a number from 1 to n.
constexpr const char* GENERATOR = R"(
    local seed
    function start(s) seed = s end
    local function random(n)
        seed = seed * 16807 % 2147483647
        return seed % n + 1
    end
    local special = {0, -0, 1, -1, 0.1, 2^53, -2^53, 2^1023, 2^-1074, math.huge, -math.huge, 0/0}
    local function number()
        local kind = random(4)
        if kind == 1 then return special[random(#special)] end
        if kind == 2 then return random(1000) - 500 end
        return (random(2147483646) - 2^30) * 2 ^ (random(200) - 100)
    end
    local function text(lowest)
        local bytes = {}
        for i = 1, random(20) - 1 do bytes[i] = string.char(random(256 - lowest) + lowest - 1) end
        return table.concat(bytes)
    end
    local function plain()
        local kind = random(4)
        if kind == 1 then return random(2) == 1 end
        if kind == 2 then return text(1) end
        return number()
    end
    local function textKey()
        local key = text(1)
        return tonumber(key) and '_' .. key or key
    end
    local function numberKey()
        local key = number()
        return key == key and key or 0.25
    end
    local function fill(depth, size, makeKey)
        local t = {}
        for i = 1, size do
            t[makeKey(i)] = depth > 0 and random(3) == 1
                and fill(depth - 1, random(size + 1) - 1, makeKey) or plain()
        end
        return t
    end
    local function index(i) return i end
    local function anyKey(i)
        local kind = random(3)
        if kind == 1 then return i end
        return kind == 2 and textKey() or numberKey()
    end
    -- Puts one more entry into a table and what becomes of it into its twin.
    local odd = {
        function(a, b) a['1e3'] = 7 b[1000] = 7 end,
        function(a, b) a[' 0x1F'] = 7 b[31] = 7 end,
        function(a, b) a.nan = 7 end,
        function(a, b) a.nan = {7} end,
        function(a, b) a.lost = print end,
        function(a, b) a.lost = function() end end,
        function(a, b) a.lost = coroutine.create(print) end,
        function(a, b) a[true] = 7 b[''] = 7 end,
        function(a, b) a[{}] = {7} b[''] = {7} end,
        function(a, b) a['a\0b'] = print end}
    makers = {
        Plain = function() return plain() end,
        Text = function() local t = text(0) return t, t:match('^[^%z]*'), true end,
        List = function() return fill(2, random(5), index) end,
        Record = function() return fill(3, 1, textKey) end,
        NumberKey = function() return fill(3, 1, numberKey) end,
        Tree = function() local t = fill(3, random(6), anyKey) return t, t, false end,
        Dictionary = function() local t = fill(1, random(30), textKey) return t, t, false end,
        Odd = function()
            local a, b = {first = 1, inner = {}}, {first = 1, inner = {}}
            local put = odd[random(#odd)]
            put(a, b)
            put(a.inner, b.inner)
            a.last, b.last = 2, 2
            return a, b, false
        end}
    function make(maker)
        value, expected, isOrdered = makers[maker]()
        if isOrdered == nil then expected, isOrdered = value, true end
    end)";

constexpr int VALUES = repetitions(25000);

} // namespace

class ScriptValueRoundTripTest : public ScriptValueFixture
{
protected:
    ScriptValueRoundTripTest() { run(COMPARISON); }
};

class GeneratedValuesTest : public ScriptValueRoundTripTest,
                            public ::testing::WithParamInterface<const char*>
{
protected:
    GeneratedValuesTest()
    {
        run(std::string(GENERATOR) + " start(20240229)  function makeNext() make('" + GetParam() +
            "') end  function isEqual() return same(read, expected) end");
        m_makeNext = environment().getScriptFunction("makeNext");
        m_isEqual = environment().getScriptFunction("isEqual");
    }

    ScriptObjectReference makeNext()
    {
        environment().callScriptFunction(m_makeNext, {}, m_none);
        return environment().getVar("value");
    }

    bool isEqual()
    {
        std::vector<FunctionParameter> outputs{FunctionParameter(false)};
        Parameters outputView(outputs);
        environment().callScriptFunction(m_isEqual, {}, outputView);
        return outputs[0].getBool();
    }

    ScriptObjectReference m_makeNext;
    ScriptObjectReference m_isEqual;
    Parameters m_none;
};

// Eight times 25,000 values, and those inside of them.
INSTANTIATE_TEST_SUITE_P(
    Kinds,
    GeneratedValuesTest,
    ::testing::Values("Plain", "Text", "List", "Record", "NumberKey", "Tree", "Dictionary", "Odd"),
    [](const auto& row) { return row.param; });

TEST_P(GeneratedValuesTest, ComeBackEqual)
{
    for (int i = 0; i < VALUES; ++i)
    {
        const Bytes bytes = write(makeNext());

        ASSERT_TRUE(read(bytes)) << i;
        ASSERT_TRUE(isEqual()) << i << ": " << ::testing::PrintToString(bytes);
    }
}

TEST_P(GeneratedValuesTest, AreWrittenAgainAsManyBytes)
{
    for (int i = 0; i < VALUES; ++i)
    {
        makeNext();
        const Bytes bytes = write(environment().getVar("expected"));
        ASSERT_TRUE(read(bytes)) << i;

        const Bytes again = write(environment().getVar("read"));

        ASSERT_EQ(again.size(), bytes.size()) << i;
        if (environment().getVar("isOrdered", false))
        {
            ASSERT_EQ(again, bytes) << i;
        }
    }
}

TEST_F(ScriptValueRoundTripTest, ComparisonTellsValuesApart)
{
    EXPECT_TRUE(holds("same({a = {0/0, -0}}, {a = {0/0, -0}})"));

    EXPECT_FALSE(holds("same({a = {0}}, {a = {-0}}) and 1 / -0 < 0"));
    EXPECT_FALSE(holds("same({a = {1}}, {a = {2}})"));
    EXPECT_FALSE(holds("same({a = 1}, {b = 1})"));
    EXPECT_FALSE(holds("same({a = 1}, {a = 1, b = 1})"));
    EXPECT_FALSE(holds("same({a = 1, b = 1}, {a = 1})"));
    EXPECT_FALSE(holds("same({}, 1)"));
    EXPECT_FALSE(holds("same(1, '1')"));
}

TEST_F(ScriptValueRoundTripTest, EveryByteButZeroSurvivesInATextOfATable)
{
    run("all = '' for i = 1, 255 do all = all .. string.char(i) end");

    ASSERT_TRUE(read(write("{[all] = all, after = true}")));

    EXPECT_TRUE(holds("read[all] == all and read.after"));
}

TEST_F(ScriptValueRoundTripTest, LongTextsSurvive)
{
    run("long = ('0123456789'):rep(100000)");

    ASSERT_TRUE(read(write("{long, [long .. 'x'] = long}")));

    EXPECT_TRUE(holds("read[1] == long and read[long .. 'x'] == long"));
}

TEST_F(ScriptValueRoundTripTest, ManyTablesBesideEachOtherSurvive)
{
    run("list = {} for i = 1, 1000 do"
        " list[i] = {id = i, name = 'e' .. i, pos = {x = i * 0.5, y = -i}, alive = i % 2 == 0}"
        " if i % 7 == 0 then list[i].extra = {} end"
        " if i % 11 == 0 then list[i] = {i, i, {}, alive = {id = i}} end end");

    ASSERT_TRUE(read(write(environment().getVar("list"))));

    EXPECT_TRUE(holds("same(read, list)"));
}

// Texts of buffers above a quarter of a megabyte are looked up a few at a time.
TEST_F(ScriptValueRoundTripTest, LargeValuesSurvive)
{
    run("list = {} for i = 1, 4000 do"
        " list[i] = {id = i, name = 'e' .. i, pos = {x = i * 0.5, y = -i}, alive = i % 2 == 0}"
        " if i % 5 == 0 then list[i] = 'text ' .. i end"
        " if i % 7 == 0 then list[i] = {'a' .. i, '', 'c' .. i, ['k' .. i] = 'd' .. i} end"
        " if i % 500 == 0 then list[i] = ('long' .. i):rep(1000) end end");

    const Bytes bytes = write(environment().getVar("list"));
    ASSERT_TRUE(read(bytes));

    EXPECT_GT(bytes.size(), 300000U);
    EXPECT_TRUE(holds("same(read, list)"));
}

TEST_F(ScriptValueRoundTripTest, TablesOfManyDifferentKeysSurvive)
{
    run("t = {} for i = 1, 100 do t[i] = {}"
        " for k = i, i + 50 do t[i]['k' .. k] = {['in' .. k % 40] = k} end end");

    ASSERT_TRUE(read(write(environment().getVar("t"))));

    EXPECT_TRUE(holds("same(read, t)"));
}

TEST_F(ScriptValueRoundTripTest, WhatIsReadIsNotWhatWasWrittenNorShared)
{
    run("shared = {7}");

    ASSERT_TRUE(read(write("{shared, shared}")));

    EXPECT_TRUE(holds("read ~= written and read[1] ~= shared"));
    EXPECT_TRUE(holds("read[1][1] == 7 and read[2][1] == 7 and read[1] ~= read[2]"));
}

TEST_F(ScriptValueRoundTripTest, MetatablesAreLost)
{
    ASSERT_TRUE(read(write("setmetatable({1}, {})")));

    EXPECT_TRUE(holds("read[1] == 1 and getmetatable(read) == nil"));
}

TEST_F(ScriptValueRoundTripTest, TableWithAFunctionComesBackWithoutIt)
{
    ASSERT_TRUE(read(write("{1, 2, f = function() end, [4] = print, 3, last = 'z'}")));

    EXPECT_TRUE(holds("same(read, {1, 2, 3, last = 'z'})"));
}

TEST_F(ScriptValueRoundTripTest, FunctionKeepsItsDebugInformation)
{
    ASSERT_TRUE(read(write("function()\n\n  error('here')\nend")));

    EXPECT_EQ(evaluate("select(2, pcall(read))"), "[string \"written = function()...\"]:3: here");
}

TEST_F(ScriptValueRoundTripTest, FunctionHasGlobalsAndNoValuesOfItsSurroundings)
{
    run("local kept = 'kept'  global = 'global'  function f() return tostring(kept) .. global end");

    ASSERT_TRUE(read(write("f")));

    EXPECT_EQ(evaluate("read()"), "nilglobal");
}

TEST_F(ScriptValueRoundTripTest, CompiledFunctionIsWrittenAsItWasLoaded)
{
    run("function f(n) local sum = 0 for i = 1, n do sum = sum + i end return sum end");
    const Bytes before = write("f");
    run("for i = 1, 1000 do f(100) end");

    const Bytes after = write("f");

    EXPECT_EQ(after, before);
}

TEST_F(ScriptValueRoundTripTest, FunctionWithFunctionsInsideWorks)
{
    ASSERT_TRUE(read(write("function(n) local function f(k) return k < 2 and k or f(k - 1) +"
                           " f(k - 2) end return f(n) end")));

    EXPECT_EQ(evaluate("read(20)"), "6765");
}

TEST_F(ScriptValueRoundTripTest, ValuesGoFromOneEnvironmentToAnother)
{
    Environment other;
    other.setName("other");
    other.setEnvironmentFor(INTERPRETER_LUA);

    const Bytes bytes = write("{pos = {x = 1, y = 2}, name = 'a'}");
    other.setVar("read", other.deserializeScriptObject(bytes));

    EXPECT_TRUE(runScript(other, "assert(read.pos.x == 1 and read.pos.y == 2)"));
    EXPECT_TRUE(runScript(other, "assert(read.name == 'a')"));
}

TEST_F(ScriptValueRoundTripTest, ReferenceOfAnotherEnvironmentIsNotWritten)
{
    Environment other;
    other.setEnvironmentFor(INTERPRETER_LUA);

    const tbMemory::Buffer bytes = other.serializeScriptObject(refer("{1}"), false);

    EXPECT_TRUE(bytes.empty());
}

TEST_F(ScriptValueRoundTripTest, BytesOutliveTheirInterpreterAndReferencesDoNot)
{
    const ScriptObjectReference stale = refer("{1, 2, 3}");
    const Bytes bytes = write(stale);
    environment().setEnvironmentFor(INTERPRETER_LUA);

    ASSERT_TRUE(read(bytes));

    EXPECT_TRUE(holds("#read == 3"));
    EXPECT_EQ(write(stale), Bytes());
}

} // namespace tbScripts::test
