// Values as bytes, compared with hand-written bytes.

#include "support/RowName.h"
#include "support/ScriptValueFixture.h"

namespace tbScripts::test
{

namespace
{

struct WriteRow
{
    const char* row;
    const char* expression;
    Bytes bytes;
};

std::vector<WriteRow> plainValues()
{
    return {
        {"False", "false", {'b', 0, 0, 0}},
        {"True", "true", {'b', 1, 0, 0}},
        {"Zero", "0", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        {"NegativeZero", "-(0 * 1)", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}},
        {"OneAndAHalf", "1.5", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}},
        {"MinusTwo", "-2", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xC0}},
        {"Infinity", "math.huge", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF0, 0x7F}},
        {"LowestBits", "2^-1074", {'n', 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}},
        {"EmptyText", "''", {'s', 0, 0, 0}},
        {"TextOfOne", "'a'", {'s', 'a', 0, 0}},
        {"TextOfTwo", "'ab'", {'s', 'a', 'b', 0}},
        {"TextOfThree", "'abc'", {'s', 'a', 'b', 'c', 0, 0, 0, 0}},
        {"TextOfSix", "'abcdef'", {'s', 'a', 'b', 'c', 'd', 'e', 'f', 0}},
        {"TextOfANumber", "'10'", {'s', '1', '0', 0}},
        {"TextWithAZero", "'a\\0bc'", {'s', 'a', 0, 'b', 'c', 0, 0, 0}},
        {"TextOfHighBytes", "'\\255\\128'", {'s', 0xFF, 0x80, 0}}};
}

// The records between those of the start and the end of the table.
std::vector<WriteRow> entries()
{
    constexpr unsigned char F0 = 0xF0;
    return {
        {"None", "{}", {}},
        {"TextKey", "{x = 1}", {'k', 'x', 0, 0, 'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x3F}},
        {"LongTextKey", "{abc = true}", {'k', 'a', 'b', 'c', 0, 0, 0, 0, 'b', 1, 0, 0}},
        {"EmptyTextKey", "{[''] = true}", {'k', 0, 0, 0, 'b', 1, 0, 0}},
        {"TextKeyWithAZero", "{['\\0a'] = true}", {'k', 0, 'a', 0, 'b', 1, 0, 0}},
        {"NumberKey",
         "{[0.5] = false}",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F, 'b', 0, 0, 0}},
        {"List", "{true, 'a'}", {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x3F, 'b', 1,   0, 0,
                                 'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  0x40, 's', 'a', 0, 0}},
        {"TextKeyThatReadsAsANumber",
         "{['10'] = true}",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x24, 0x40, 'b', 1, 0, 0}},
        {"TextKeyWithBlanksThatReadsAsANumber",
         "{[' 0x10 '] = true}",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x30, 0x40, 'b', 1, 0, 0}},
        {"TextKeyOfAnExponent",
         "{['-.1e1'] = true}",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0xBF, 'b', 1, 0, 0}},
        {"TextKeyInf", "{inf = true}", {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x7F, 'b', 1, 0, 0}},
        {"TextKeyInfinity",
         "{['-INFINITY'] = true}",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0xFF, 'b', 1, 0, 0}},
        {"TextKeyThatBeginsAsANumberWord",
         "{name = true}",
         {'k', 'n', 'a', 'm', 'e', 0, 0, 0, 'b', 1, 0, 0}},
        {"TextKeyThatBeginsWithANumber", "{['1a'] = true}", {'k', '1', 'a', 0, 'b', 1, 0, 0}},
        {"TruthKey", "{[true] = true}", {'k', 0, 0, 0, 'b', 1, 0, 0}},
        {"TableKey", "{[{}] = true}", {'k', 0, 0, 0, 'b', 1, 0, 0}},
        {"FunctionKey", "{[print] = true}", {'k', 0, 0, 0, 'b', 1, 0, 0}},
        {"NestedTable", "{a = {b = false}}", {'k', 'a', 0,   0, '{', 0, 0,   0, 'k', 'b',
                                              0,   0,   'b', 0, 0,   0, '}', 0, 0,   0}},
        {"EmptyNestedTable", "{a = {}}", {'k', 'a', 0, 0, '{', 0, 0, 0, '}', 0, 0, 0}},
        {"FunctionValue", "{f = function() end}", {'k', 'f', 0, 0}},
        {"HostFunctionValue", "{f = print}", {'k', 'f', 0, 0}},
        {"CoroutineValue", "{c = coroutine.create(print)}", {'k', 'c', 0, 0}},
        {"ForeignNumberValue", "{c = require('ffi').new('int64_t', 1)}", {'k', 'c', 0, 0}}};
}

} // namespace

using ScriptValueBytesWriteRowTest = OnRows<ScriptValueFixture, WriteRow>;

using PlainValueBytesTest = ScriptValueBytesWriteRowTest;

ROWS(PlainValueBytesTest, plainValues());

TEST_P(PlainValueBytesTest, AreOneRecord)
{
    EXPECT_EQ(write(GetParam().expression), GetParam().bytes);
}

TEST_P(PlainValueBytesTest, DoNotDependOnTheTransferOfOwnership)
{
    EXPECT_EQ(write(GetParam().expression, true), GetParam().bytes);
}

TEST_P(PlainValueBytesTest, AreTheSameInATable)
{
    const std::string table = std::string("{v = ") + GetParam().expression + "}";

    EXPECT_EQ(
        write(table), joined({{'{', 0, 0, 0, 'k', 'v', 0, 0}, GetParam().bytes, {'}', 0, 0, 0}}));
}

using TableEntryBytesTest = ScriptValueBytesWriteRowTest;

ROWS(TableEntryBytesTest, entries());

TEST_P(TableEntryBytesTest, StandBetweenStartAndEnd)
{
    EXPECT_EQ(
        write(GetParam().expression), joined({{'{', 0, 0, 0}, GetParam().bytes, {'}', 0, 0, 0}}));
}

using ScriptValueBytesWriteTest = ScriptValueFixture;

TEST_F(ScriptValueBytesWriteTest, NothingIsWrittenForNil)
{
    EXPECT_THAT(write("nil"), IsEmpty());
}

TEST_F(ScriptValueBytesWriteTest, NothingIsWrittenForTheReferenceToAReadNil)
{
    const ScriptObjectReference nil = environment().deserializeScriptObject(Bytes{'n', 0, 0});

    EXPECT_THAT(write(nil), IsEmpty());
}

TEST_F(ScriptValueBytesWriteTest, NothingIsWrittenForAFunctionOfTheHost)
{
    EXPECT_THAT(write("print"), IsEmpty());
}

TEST_F(ScriptValueBytesWriteTest, FunctionIsWrittenAsItsTagAndWhatTheInterpreterDumps)
{
    run("dump = string.dump(function(a) return a + 1 end)");
    const std::string dump(std::string_view(environment().getVar("dump", "")));

    const Bytes bytes = write("loadstring(dump)");

    EXPECT_EQ(bytes, joined({{'f'}, Bytes(dump.begin(), dump.end())}));
    EXPECT_GT(bytes.size(), 20U);
}

TEST_F(ScriptValueBytesWriteTest, TableThatIsReachedTwiceIsWrittenTwice)
{
    run("shared = {true}");

    const Bytes once = write("{shared}");
    const Bytes twice = write("{shared, shared}");

    EXPECT_EQ(once.size(), 8U + 12 + 24);
    EXPECT_EQ(twice.size(), 8U + 2 * (12 + 24));
}

TEST_F(ScriptValueBytesWriteTest, MetatablesOfTablesAreNotAsked)
{
    const Bytes bytes =
        write("setmetatable({a = true}, {__index = error, __pairs = error, __len = error,"
              " __tostring = error, __metatable = false})");

    EXPECT_EQ(bytes, (Bytes{'{', 0, 0, 0, 'k', 'a', 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0}));
}

TEST_F(ScriptValueBytesWriteTest, KeyThatReadsAsNoNumberIsWritten)
{
    const Bytes bytes = write("{nan = true}");

    ASSERT_EQ(bytes.size(), 24U);
    EXPECT_EQ(bytes[4], 'i');
    EXPECT_EQ(bytes[15] & 0x7F, 0x7F); // the exponent of all ones
    EXPECT_EQ(bytes[14] & 0xF0, 0xF0);
    EXPECT_EQ(Bytes(bytes.begin() + 16, bytes.end()), (Bytes{'b', 1, 0, 0, '}', 0, 0, 0}));
}

TEST_F(ScriptValueBytesWriteTest, WritingLeavesTheValueAsItWas)
{
    run("v = {['10'] = 'ten', [true] = 'yes', list = {1, 2}}");

    write(environment().getVar("v"), true);

    EXPECT_TRUE(holds("v['10'] == 'ten' and v[10] == nil and v[true] == 'yes' and #v.list == 2"));
}

TEST_F(ScriptValueBytesWriteTest, EveryEntryOfALargeTableIsWrittenOnce)
{
    run("v = {} for i = 1, 100000 do v['key' .. i] = i end");

    const Bytes bytes = write(environment().getVar("v"));

    // Keys of up to 6 letters take 8 bytes, longer ones 12.
    EXPECT_EQ(bytes.size(), 8U + 999 * (8 + 12) + 99001 * (12 + 12));
}

} // namespace tbScripts::test
