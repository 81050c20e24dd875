// Values that lie at the edge of their types, on their way between scripts, host and bytes.

#include "support/RowName.h"
#include "support/Sanitizers.h"
#include "support/ScriptValueFixture.h"

#include <tbExport/JsonExporter.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <locale>
#include <string>

namespace tbScripts::test
{

namespace
{

struct BitsRow
{
    const char* row;
    std::uint64_t bits;
};

// The record of the double with these bits.
Bytes numberRecord(unsigned char tag, std::uint64_t bits)
{
    Bytes record{tag, 0, 0, 0};
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&bits);
    record.insert(record.end(), bytes, bytes + sizeof(bits));
    return record;
}

} // namespace

using NanPatternTest = OnRows<ScriptValueFixture, BitsRow>;

ROWS(
    NanPatternTest,
    {"Quiet", 0x7FF8000000000000U},
    {"QuietNegative", 0xFFF8000000000000U},
    {"Signalling", 0x7FF0000000000001U},
    {"SignallingNegative", 0xFFF0000000000001U},
    {"AllBits", 0xFFFFFFFFFFFFFFFFU},
    {"LikeNil", 0xFFFFFFFF00000000U},
    {"LikeATable", 0xFFFA000012345678U},
    {"LikeAText", 0xFFFD800012345678U},
    {"LikeLightUserdata", 0xFFFE000012345678U});

TEST_P(NanPatternTest, IsReadAsANumberAlsoInATable)
{
    const Bytes record = numberRecord('n', GetParam().bits);

    ASSERT_TRUE(read(record));
    EXPECT_TRUE(holds("type(read) == 'number' and read ~= read"));
    ASSERT_TRUE(read(joined({{'{', 0, 0, 0, 'k', 'x', 0, 0}, record, {'}', 0, 0, 0}})));
    EXPECT_TRUE(holds("type(read.x) == 'number' and read.x ~= read.x"));
}

TEST_P(NanPatternTest, IsDroppedAsAKey)
{
    ASSERT_TRUE(read(joined(
        {{'{', 0, 0, 0},
         numberRecord('i', GetParam().bits),
         {'b', 1, 0, 0, 'k', 'x', 0, 0, 'b', 1, 0, 0, '}', 0, 0, 0}})));

    EXPECT_TRUE(holds("read.x and next(read, 'x') == nil and next(read) == 'x'"));
}

TEST_P(NanPatternTest, IsANumberWhereTheHostSetsIt)
{
    double number = 0.0;
    std::memcpy(&number, &GetParam().bits, sizeof(number));

    environment().setVar("set", number);

    EXPECT_TRUE(holds("type(set) == 'number' and set ~= set"));
}

using ConversionScenarioTest = ScriptValueFixture;

TEST_F(ConversionScenarioTest, EveryByteOfATextReachesTheHost)
{
    std::string arrived;
    declare(
        "take",
        {PARAM_TYPE_STRING},
        [&](const Parameters& parameters)
        {
            arrived = std::string(std::string_view(parameters[0].getString()));
            return FunctionParameter::VOID;
        });

    run("local t = {} for i = 0, 255 do t[i + 1] = string.char(i) end take(table.concat(t))");

    std::string expected;
    for (int i = 0; i < 256; ++i)
        expected += static_cast<char>(i);
    EXPECT_EQ(arrived, expected);
}

TEST_F(ConversionScenarioTest, ArgumentsAreNotConvertedInPlace)
{
    declare(
        "take",
        {PARAM_TYPE_STRING, PARAM_TYPE_INT, PARAM_TYPE_DOUBLE, PARAM_TYPE_BOOL},
        [](const Parameters&) { return FunctionParameter::VOID; });

    run("local number, text, list = 10, '10', {10, '10'} "
        "take(number, text, text, 0)  take(list[1], list[2], list[2], '') "
        "types = type(number) .. type(text) .. type(list[1]) .. type(list[2])");

    EXPECT_EQ(environment().getVar("types", ""), "numberstringnumberstring");
}

TEST_F(ConversionScenarioTest, NumbersThatAreNoneReachTheHostAsTheyAre)
{
    std::vector<double> arrived;
    declare(
        "take",
        {PARAM_TYPE_DOUBLE},
        [&](const Parameters& parameters)
        {
            arrived.push_back(parameters[0].getDouble());
            return FunctionParameter::VOID;
        });

    run("take(1/0)  take(-1/0)  take(0/0)");

    EXPECT_EQ(arrived[0], std::numeric_limits<double>::infinity());
    EXPECT_EQ(arrived[1], -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(arrived[2]));
}

TEST_F(ConversionScenarioTest, MixedKeysComeBackUnderTheirOwn)
{
    ASSERT_TRUE(
        read(write("{10, 20, [2.5] = 1, [-1] = 'minus', a = 2, [4] = 'four', inner = {}}")));

    EXPECT_TRUE(
        holds("read[1] == 10 and read[2] == 20 and read[2.5] == 1 and read[-1] == 'minus' and "
              "read.a == 2 and read[3] == nil and read[4] == 'four' and next(read.inner) == nil"));
}

TEST_F(ConversionScenarioTest, TableOfAMillionKeysComesBackWhole)
{
    constexpr int COUNT = repetitions(1000000);
    const std::string count = std::to_string(COUNT);

    ASSERT_TRUE(read(write(
        "(function() local t = {} for i = 1, " + count +
        " do t['k' .. i] = i end return t end)()")));

    EXPECT_TRUE(holds(
        "(function() local n, sum = 0, 0 for k, v in pairs(read) do n = n + 1 sum = sum + v end "
        "return n == " +
        count + " and sum == n * (n + 1) / 2 and read.k1 == 1 end)()"));
}

TEST_F(ConversionScenarioTest, TextOf64MebibytesComesBackWhole)
{
    ASSERT_TRUE(read(write("(('x'):rep(2 ^ 26))")));

    EXPECT_TRUE(holds("#read == 2 ^ 26 and read:find('[^x]') == nil"));
}

/// Numbers as texts, in a process whose locale writes commas into them.
class LocaleTest : public ScriptValueFixture
{
protected:
    LocaleTest()
        : m_before(std::locale::global(std::locale(std::locale(), new Commas)))
    {
        std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // where there is one
    }

    ~LocaleTest() override
    {
        std::setlocale(LC_NUMERIC, "C");
        std::locale::global(m_before);
    }

private:
    class Commas : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }

        char do_thousands_sep() const override { return '.'; }

        std::string do_grouping() const override { return "\3"; }
    };

    std::locale m_before;
};

TEST_F(LocaleTest, ChangesNoStringOfANumberNoMessageAndNoNumberOfASource)
{
    environment().setVar("number", 12345.5);

    EXPECT_EQ(environment().getVar("number", ""), "12345.5");
    EXPECT_EQ(
        runExpectingError("error(12345.5, 0)"), "Error while executing script 'test' : 12345.5");
    EXPECT_EQ(evaluate("12345.5 + '0.25'"), "12345.75");
}

TEST_F(LocaleTest, ChangesNoDocument)
{
    const tbExport::ExporterLoadResult document =
        tbExport::JsonExporter::importIntoTree("[12345.5, 1234567]");

    ASSERT_NE(document.getRoot(), nullptr);
    EXPECT_EQ(document.getRoot()->getElement(0)->getNumber(), 12345.5);
    EXPECT_EQ(
        std::string(
            std::string_view(tbExport::JsonExporter::exportTreeIntoString(document.getRoot()))),
        "[\n  12345.5,\n  1234567\n]\n");
}

} // namespace tbScripts::test
