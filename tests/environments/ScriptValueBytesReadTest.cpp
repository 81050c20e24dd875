// Hand-written bytes, as values.

#include "support/RowName.h"
#include "support/ScriptValueFixture.h"

namespace tbScripts::test
{

namespace
{

constexpr unsigned char F0 = 0xF0;

struct ReadRow
{
    const char* row;
    Bytes bytes;
    const char* expectation; // an expression that has to be true of `read`
};

std::vector<ReadRow> plainValues()
{
    return {
        {"False", {'b', 0, 0, 0}, "read == false"},
        {"True", {'b', 1, 0, 0}, "read == true"},
        {"TrueByAnyOtherByte", {'b', 0x80, 0, 0}, "read == true"},
        {"TrueBeforeAnyPadding", {'b', 1, 0xAA, 0xBB}, "read == true"},
        {"Zero", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, "read == 0 and 1 / read > 0"},
        {"NegativeZero", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}, "read == 0 and 1 / read < 0"},
        {"OneAndAHalf", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, "read == 1.5"},
        {"NumberAfterAnyPadding", {'n', 1, 2, 3, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F}, "read == 1.5"},
        {"MoreThanANumber", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x3F, 1, 2}, "read == 1.5"},
        {"Infinity", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x7F}, "read == math.huge"},
        {"NoNumber", {'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x7F}, "read ~= read"},
        {"NoNumberOfAllOnes",
         {'n', 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
         "type(read) == 'number' and read ~= read"},
        {"NoNumberThatLooksLikeATable",
         {'n', 0, 0, 0, 0x10, 0x32, 0x54, 0x76, 0xFF, 0x7F, 0xFA, 0xFF},
         "type(read) == 'number' and read ~= read"},
        {"EmptyText", {'s', 0, 0, 0}, "read == ''"},
        {"TextOfThree", {'s', 'a', 'b', 'c', 0, 0, 0, 0}, "read == 'abc'"},
        {"TextUpToItsFirstZero", {'s', 'a', 0, 'b', 'c', 0, 0, 0}, "read == 'a'"},
        {"TextWithoutAZero", {'s', 'a', 'b'}, "read == 'ab'"},
        {"TextOfHighBytes", {'s', 0xFF, 0x80, 0}, "read == '\\255\\128'"},
        {"TextThatReadsAsANumber", {'s', '1', '0', 0}, "read == '10'"},
        {"EmptyTable", {'{', 0, 0, 0, '}', 0, 0, 0}, "type(read) == 'table' and not next(read)"},
        {"TableBeforeAnythingElse",
         {'{', 9, 9, 9, '}', 9, 9, 9, 'b', 1, 0, 0},
         "type(read) == 'table' and not next(read)"}};
}

// What stands between the start and the end of the table `read`.
std::vector<ReadRow> entries()
{
    return {
        {"TextKey",
         {'k', 'x', 0, 0, 'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x3F},
         "read.x == 1 and next(read, 'x') == nil"},
        {"LongTextKey", {'k', 'a', 'b', 'c', 0, 0, 0, 0, 'b', 1, 0, 0}, "read.abc == true"},
        {"EmptyTextKey", {'k', 0, 0, 0, 'b', 1, 0, 0}, "read[''] == true"},
        {"TextKeyThatReadsAsANumber",
         {'k', '1', '0', 0, 'b', 1, 0, 0},
         "read['10'] == true and read[10] == nil"},
        {"TextKeyNan", {'k', 'n', 'a', 'n', 0, 0, 0, 0, 'b', 1, 0, 0}, "read.nan == true"},
        {"NumberKey",
         {'i', 7, 7, 7, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F, 'b', 0, 0, 0},
         "read[0.5] == false"},
        {"TextValue", {'k', 'a', 0, 0, 's', 'b', 0, 0}, "read.a == 'b'"},
        {"TableValue",
         {'k', 'a', 0, 0, '{', 0, 0, 0, 'k', 'b', 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0},
         "read.a.b == true and next(read, 'a') == nil"},
        {"TableValueAndMore",
         {'k', 'a', 0, 0, '{', 0, 0, 0, '}', 0, 0, 0, 'k', 'b', 0, 0, 'b', 1, 0, 0},
         "next(read.a) == nil and read.b == true"},
        {"SameKeyTwice",
         {'k', 'a', 0, 0, 'b', 0, 0, 0, 'k', 'a', 0, 0, 'b', 1, 0, 0},
         "read.a == true"},
        {"SameKeyWithOtherPadding",
         {'k', 'a', 0, 1, 'b', 0, 0, 0, 'k', 'a', 0, 2, 'b', 1, 0, 0},
         "read.a == true and next(read, 'a') == nil"},
        {"KeyBeforeAKey",
         {'k', 'f', 0, 0, 'k', 'a', 0, 0, 'b', 1, 0, 0},
         "read.a == true and not read.f"},
        {"NumberKeyBeforeAKey",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x3F, 'k', 'a', 0, 0, 'b', 1, 0, 0},
         "read.a == true and read[1] == nil"},
        {"KeyBeforeTheEnd",
         {'k', 'a', 0, 0, 'b', 1, 0, 0, 'k', 'f', 0, 0},
         "read.a == true and not read.f"},
        {"KeyThatIsNoNumber",
         {'k', 'a', 0,    0,    'b', 1, 0, 0, 'i', 0,   0, 0, 0,   0, 0, 0,
          0,   0,   0xF8, 0x7F, 'b', 1, 0, 0, 'k', 'b', 0, 0, 'b', 1, 0, 0},
         "read.a and read.b and next(read, next(read, next(read))) == nil"},
        {"KeyThatIsNoNumberOfATable",
         {'i', 0, 0,   0, 0, 0, 0,   0, 0, 0, 0xF8, 0xFF, '{', 0, 0,   0, 'k', 'b',
          0,   0, 'b', 1, 0, 0, '}', 0, 0, 0, 'k',  'a',  0,   0, 'b', 1, 0,   0},
         "read.a and next(read, 'a') == nil"},
        {"KeyThatIsNoNumberAfterAKey",
         {'k', 'f', 0, 0, 'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x7F, 'b', 1, 0, 0},
         "next(read) == nil"},
        {"KeyThatIsNoNumberBeforeAKey",
         {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xF8, 0x7F, 'k', 'a', 0, 0, 'b', 1, 0, 0},
         "read.a == true"},
        {"UnknownBytes",
         {'x', 1, 2, 3, 'f', 0, 0, 0, 'k', 'a', 0, 0, 0, 0, 0, 0, 'b', 1, 0, 0, 0xFF, 0, 0, 0},
         "read.a == true"},
        {"TextThatIsCutAtAZero",
         {'k', 'a', 0, 0, 's', 'b', 0, 'c', 'x', 'e', 'f', 0, 'k', 'd', 0, 0, 'b', 1, 0, 0},
         "read.a == 'b' and read.d == true"}};
}

struct UnreadableRow
{
    const char* row;
    Bytes bytes;
};

std::vector<UnreadableRow> unreadable()
{
    return {
        {"Nothing", {}},
        {"TagBelowAll", {'a', 1, 0, 0}},
        {"TagAboveAll", {'|', 1, 0, 0}},
        {"EndOfATable", {'}', 0, 0, 0}},
        {"Zero", {0, 0, 0, 0}},
        {"HighestByte", {0xFF, 0xFF, 0xFF, 0xFF}},
        {"UnknownTag", {'c', 1, 0, 0}},
        {"LastUnknownTag", {'z', 1, 0, 0}},
        {"NumberKey", {'i', 0, 0, 0, 0, 0, 0, 0, 0, 0, F0, 0x3F}},
        {"TextKey", {'k', 'a', 0, 0}},
        {"FunctionWithoutSense", {'f', 0x1B, 'L', 'J', 2}},
        {"FunctionWithASyntaxError", {'f', '(', '('}},
        {"TruthWithoutKey", {'{', 0, 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0}},
        {"NumberWithoutKey", {'{', 0, 0, 0, 'n', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '}', 0, 0, 0}},
        {"TextWithoutKey", {'{', 0, 0, 0, 's', 'a', 0, 0, '}', 0, 0, 0}},
        {"TableWithoutKey", {'{', 0, 0, 0, '{', 0, 0, 0, '}', 0, 0, 0, '}', 0, 0, 0}},
        {"InstanceWithoutKey", {'{', 0, 0, 0, 'u', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, '}', 0, 0, 0}},
        {"SecondValueOfAKey",
         {'{', 0, 0, 0, 'k', 'a', 0, 0, 'b', 1, 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0}},
        {"TableWithoutEnd", {'{', 0, 0, 0, 'k', 'a', 0, 0, 'b', 1, 0, 0}},
        {"TableOfUnknownBytes", {'{', 0, 0, 0, 0, 0, 0, 0}},
        {"NestedTableWithoutEnd", {'{', 0, 0, 0, 'k', 'a', 0, 0, '{', 0, 0, 0, '}', 0, 0, 0}},
        {"TableThatEndsInANumber", {'{', 0, 0, 0, 'k', 'a', 0, 0, 'n', 0, 0, 0, 0, 0, 0, 0}},
        {"TableThatEndsInANumberKey", {'{', 0, 0, 0, 'i', 0, 0, 0, 0, 0, 0, 0}},
        {"TableThatEndsInAText", {'{', 0, 0, 0, 'k', 'a', 0, 0, 's', 'b', 'c', 'd'}},
        {"TextThatIsCutBeforeATruth",
         {'{', 0, 0, 0, 'k', 'a', 0, 0, 's', 0, 'c', 'd', 'b', 'b', 0, 0, '}', 0, 0, 0}}};
}

// A tag, and how many bytes of such a record are too few.
struct ShortRow
{
    const char* row;
    unsigned char tag;
    std::size_t tooFew;
};

} // namespace

using ReadRowFixture = OnRows<ScriptValueFixture, ReadRow>;

using PlainBytesTest = ReadRowFixture;

ROWS(PlainBytesTest, plainValues());

TEST_P(PlainBytesTest, AreReadAsTheirValueWhichIsAScriptObject)
{
    ASSERT_TRUE(read(GetParam().bytes));

    EXPECT_TRUE(holds(GetParam().expectation));
    EXPECT_EQ(environment().deserializeScriptObject(GetParam().bytes).getType(), 9);
}

using EntryBytesTest = ReadRowFixture;

ROWS(EntryBytesTest, entries());

TEST_P(EntryBytesTest, AreReadAsEntries)
{
    ASSERT_TRUE(read(joined({{'{', 0, 0, 0}, GetParam().bytes, {'}', 0, 0, 0}})));

    EXPECT_TRUE(holds(GetParam().expectation));
}

TEST_P(EntryBytesTest, AreReadAtAnyAddress)
{
    const Bytes bytes = joined({{0, '{', 0, 0, 0}, GetParam().bytes, {'}', 0, 0, 0}});

    environment().setVar(
        "read",
        environment().deserializeScriptObject(
            tbMemory::BufferView<unsigned char>(bytes.data() + 1, bytes.size() - 1)));

    EXPECT_TRUE(holds(GetParam().expectation));
}

TEST_P(EntryBytesTest, AreReadIfTheEndOfTheTableIsTheLastByte)
{
    ASSERT_TRUE(read(joined({{'{', 0, 0, 0}, {0, 0, 0, 0}, GetParam().bytes, {'}'}})));

    EXPECT_TRUE(holds(GetParam().expectation));
}

TEST_P(EntryBytesTest, AreReadInAFurtherTable)
{
    ASSERT_TRUE(read(joined(
        {{'{', 0, 0, 0, 'k', 'o', 0, 0, '{', 0, 0, 0},
         GetParam().bytes,
         {'}', 0, 0, 0, '}', 0, 0, 0}})));

    run("read = read.o");
    EXPECT_TRUE(holds(GetParam().expectation));
}

using UnreadableBytesTest = OnRows<ScriptValueFixture, UnreadableRow>;

ROWS(UnreadableBytesTest, unreadable());

TEST_P(UnreadableBytesTest, GiveAnEmptyReference)
{
    EXPECT_FALSE(read(GetParam().bytes));
}

using ShortBytesTest = OnRows<ScriptValueFixture, ShortRow>;

ROWS(
    ShortBytesTest,
    {"Truth", 'b', 3},
    {"Number", 'n', 11},
    {"Text", 's', 2},
    {"Instance", 'u', 11},
    {"Table", '{', 7});

TEST_P(ShortBytesTest, AreAScriptObjectThatIsNilUnlessThereIsOneByteMore)
{
    for (std::size_t size = 1; size <= GetParam().tooFew + 1; ++size)
    {
        Bytes bytes(size, '}');
        bytes[0] = GetParam().tag;

        ASSERT_TRUE(read(bytes)) << size;
        EXPECT_EQ(environment().isVarSet("read"), size > GetParam().tooFew) << size;
    }
    EXPECT_EQ(environment().deserializeScriptObject(Bytes{GetParam().tag}).getType(), 9);
}

using ScriptValueBytesReadTest = ScriptValueFixture;

TEST_F(ScriptValueBytesReadTest, FunctionIsAScriptFunction)
{
    run("dump = string.dump(function(a) return a + 1 end)");
    const std::string dump(std::string_view(environment().getVar("dump", "")));
    const Bytes bytes = joined({{'f'}, Bytes(dump.begin(), dump.end())});

    const ScriptObjectReference function = environment().deserializeScriptObject(bytes);

    EXPECT_EQ(function.getType(), 8);
    environment().setVar("read", function);
    EXPECT_EQ(evaluate("read(41)"), "42");
}

TEST_F(ScriptValueBytesReadTest, FunctionMayBeSourceText)
{
    ASSERT_TRUE(read(joined({{'f'}, {'r', 'e', 't', 'u', 'r', 'n', ' ', '7'}})));

    EXPECT_EQ(evaluate("read()"), "7");
}

TEST_F(ScriptValueBytesReadTest, FunctionFromSourceTextIsCalledDeserialization)
{
    const std::string source = "error('lost')";
    ASSERT_TRUE(read(joined({{'f'}, Bytes(source.begin(), source.end())})));

    EXPECT_EQ(errorOf("read()"), "[string \"Deserialization\"]:1: lost");
}

TEST_F(ScriptValueBytesReadTest, FunctionWithoutAnyBytesDoesNothing)
{
    ASSERT_TRUE(read({'f'}));

    EXPECT_EQ(evaluate("select('#', read())"), "0");
}

} // namespace tbScripts::test
