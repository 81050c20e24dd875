// Numbers of documents: what they are read as, and what they are printed as.

#include "support/RowName.h"

#include <tbExport/JsonExporter.h>
#include <tbMemory/String.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

namespace
{

using tbExport::ExporterLoadResult;
using tbExport::JsonExporter;
using tbScripts::test::operator<<;
using tbExport::Node;
using tbMemory::String;
using tbScripts::test::RowName;

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

class JsonNumberReadTest : public ::testing::TestWithParam<ReadRow>
{
};

TEST_P(JsonNumberReadTest, IsTheNearestDouble)
{
    const ExporterLoadResult result = JsonExporter::importIntoTree(GetParam().text);

    ASSERT_NE(result.getRoot(), nullptr) << result.getError();
    EXPECT_TRUE(result.getRoot()->isNumber());
    EXPECT_EQ(result.getRoot()->getNumber(), GetParam().number);
    EXPECT_EQ(std::signbit(result.getRoot()->getNumber()), std::signbit(GetParam().number));
}

INSTANTIATE_TEST_SUITE_P(
    Texts,
    JsonNumberReadTest,
    ::testing::Values(
        ReadRow{"zero", "0", 0.0},
        ReadRow{"negativeZero", "-0", -0.0},
        ReadRow{"negativeZeroWithFraction", "-0.0", -0.0},
        ReadRow{"zeroTimesALargePower", "0e400", 0.0},
        ReadRow{"negative", "-17", -17.0},
        ReadRow{"fraction", "0.5", 0.5},
        ReadRow{"exponent", "1e3", 1000.0},
        ReadRow{"capitalExponent", "25E-1", 2.5},
        ReadRow{"signedExponent", "1e+2", 100.0},
        ReadRow{"digitsThatTheLibraryRoundsDown", "0.11935319286735585", 0.11935319286735585},
        ReadRow{"digitsThatTheLibraryRoundsUp", "0.49431128204553837", 0.49431128204553837},
        ReadRow{"largestSigned", "9223372036854775807", 9223372036854775807.0},
        ReadRow{"smallestSigned", "-9223372036854775808", -9223372036854775808.0},
        ReadRow{"largestUnsigned", "18446744073709551615", 18446744073709551615.0},
        ReadRow{"beyondUnsigned", "18446744073709551616", 18446744073709551616.0},
        ReadRow{"thirtyDigits", "123456789012345678901234567890", 1.2345678901234568e29},
        ReadRow{"largest", "1.7976931348623157e308", 1.7976931348623157e308},
        ReadRow{"smallest", "5e-324", 5e-324},
        ReadRow{"belowTheSmallest", "1e-999", 0.0},
        ReadRow{"negativeBelowTheSmallest", "-1e-999", -0.0},
        ReadRow{"smallDespiteManyZeros", "0." + std::string(400, '0') + "1e401", 1.0},
        ReadRow{"smallDespiteManyDigits", "1" + std::string(400, '0') + "e-400", 1.0}),
    RowName());

struct PrintRow
{
    const char* row;
    double number;
    const char* text;
};

class JsonNumberPrintTest : public ::testing::TestWithParam<PrintRow>
{
};

TEST_P(JsonNumberPrintTest, IsTheShortestTextThatReadsBack)
{
    EXPECT_EQ(print(GetParam().number), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers,
    JsonNumberPrintTest,
    ::testing::Values(
        PrintRow{"zero", 0.0, "0\n"},
        PrintRow{"negativeZero", -0.0, "-0.0\n"},
        PrintRow{"one", 1.0, "1\n"},
        PrintRow{"negative", -12.0, "-12\n"},
        PrintRow{"million", 1e6, "1000000\n"},
        PrintRow{"largestExactInteger", 9007199254740992.0, "9007199254740992\n"},
        PrintRow{"largeInteger", 1e18, "1000000000000000000\n"},
        PrintRow{"beyondIntegers", 1e22, "1e+22\n"},
        PrintRow{"negativeBeyondIntegers", -1e22, "-1e+22\n"},
        PrintRow{"tenth", 0.1, "0.1\n"},
        PrintRow{"sumOfTenths", 0.1 + 0.2, "0.30000000000000004\n"},
        PrintRow{"small", 1e-7, "1e-07\n"},
        PrintRow{"largest", 1.7976931348623157e308, "1.7976931348623157e+308\n"},
        PrintRow{"smallest", 5e-324, "5e-324\n"},
        PrintRow{"infinity", INFINITE, "null\n"},
        PrintRow{"negativeInfinity", -INFINITE, "null\n"},
        PrintRow{"notANumber", std::numeric_limits<double>::quiet_NaN(), "null\n"}),
    RowName());

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
