// Numbers of documents: what they are read as, and what they are printed as.

#include "support/RowName.h"

#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbExport::Node;
using tbMemory::String;
using tbScripts::test::OnRows;

constexpr double INFINITE = std::numeric_limits<double>::infinity();

String print(double number)
{
    Node node;
    node.setNumber(number);
    return JsonExporter::exportTreeIntoString(&node);
}

struct ReadRow
{
    const char* row;
    std::string text;
    double number;
};

using JsonNumberReadTest = OnRows<::testing::Test, ReadRow>;

TEST_P(JsonNumberReadTest, IsTheNearestDouble)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(GetParam().text);

    ASSERT_NE(result.getRoot(), nullptr) << result.getError();
    EXPECT_TRUE(result.getRoot()->isNumber());
    EXPECT_EQ(result.getRoot()->getNumber(), GetParam().number);
    EXPECT_EQ(std::signbit(result.getRoot()->getNumber()), std::signbit(GetParam().number));
}

ROWS(
    JsonNumberReadTest,
    {"zero", "0", 0.0},
    {"negativeZero", "-0", -0.0},
    {"negativeZeroWithFraction", "-0.0", -0.0},
    {"zeroTimesALargePower", "0e400", 0.0},
    {"negative", "-17", -17.0},
    {"fraction", "0.5", 0.5},
    {"exponent", "1e3", 1000.0},
    {"capitalExponent", "25E-1", 2.5},
    {"signedExponent", "1e+2", 100.0},
    {"digitsThatTheLibraryRoundsDown", "0.11935319286735585", 0.11935319286735585},
    {"digitsThatTheLibraryRoundsUp", "0.49431128204553837", 0.49431128204553837},
    {"largestSigned", "9223372036854775807", 9223372036854775807.0},
    {"smallestSigned", "-9223372036854775808", -9223372036854775808.0},
    {"largestUnsigned", "18446744073709551615", 18446744073709551615.0},
    {"beyondUnsigned", "18446744073709551616", 18446744073709551616.0},
    {"thirtyDigits", "123456789012345678901234567890", 1.2345678901234568e29},
    {"largest", "1.7976931348623157e308", 1.7976931348623157e308},
    {"smallest", "5e-324", 5e-324},
    {"belowTheSmallest", "1e-999", 0.0},
    {"negativeBelowTheSmallest", "-1e-999", -0.0},
    {"smallDespiteManyZeros", "0." + std::string(400, '0') + "1e401", 1.0},
    {"smallDespiteManyDigits", "1" + std::string(400, '0') + "e-400", 1.0});

struct PrintRow
{
    const char* row;
    double number;
    const char* text;
};

using JsonNumberPrintTest = OnRows<::testing::Test, PrintRow>;

TEST_P(JsonNumberPrintTest, IsTheShortestTextThatReadsBack)
{
    EXPECT_EQ(print(GetParam().number), GetParam().text);
}

ROWS(
    JsonNumberPrintTest,
    {"zero", 0.0, "0\n"},
    {"negativeZero", -0.0, "-0.0\n"},
    {"one", 1.0, "1\n"},
    {"negative", -12.0, "-12\n"},
    {"million", 1e6, "1000000\n"},
    {"largestExactInteger", 9007199254740992.0, "9007199254740992\n"},
    {"largeInteger", 1e18, "1000000000000000000\n"},
    {"beyondIntegers", 1e22, "1e+22\n"},
    {"negativeBeyondIntegers", -1e22, "-1e+22\n"},
    {"tenth", 0.1, "0.1\n"},
    {"sumOfTenths", 0.1 + 0.2, "0.30000000000000004\n"},
    {"small", 1e-7, "1e-07\n"},
    {"largest", 1.7976931348623157e308, "1.7976931348623157e+308\n"},
    {"smallest", 5e-324, "5e-324\n"},
    {"infinity", INFINITE, "null\n"},
    {"negativeInfinity", -INFINITE, "null\n"},
    {"notANumber", std::numeric_limits<double>::quiet_NaN(), "null\n"});

TEST(JsonNumberTest, WholeNumbersOfADocumentKeepTheirDigits)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(
        "[9007199254740993, -9223372036854775808, 18446744073709551615]");

    const String text = JsonExporter::exportTreeIntoString(result.getRoot());

    EXPECT_EQ(text, "[\n  9007199254740993,\n  -9223372036854775808,\n  18446744073709551615\n]\n");
}

TEST(JsonNumberTest, CopiesKeepTheDigitsToo)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree("9007199254740993");

    const Node copy(*result.getRoot());

    EXPECT_EQ(JsonExporter::exportTreeIntoString(&copy), "9007199254740993\n");
}

} // namespace
