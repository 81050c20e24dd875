#include "tbscripts/Table.h"

#include <gtest/gtest.h>

namespace tool::test
{

namespace
{

TEST(TableTest, AlignsColumnsByTheirLongestCell)
{
    const std::string text = layOut(
        {{"A", "SIZE", "REST"}, {"long", "1", "x"}, {"\xc3\xa9", "12345", ""}},
        {ALIGNMENT::LEFT, ALIGNMENT::RIGHT, ALIGNMENT::LEFT});

    EXPECT_EQ(
        text,
        "A      SIZE  REST\n"
        "long      1  x\n"
        "\xc3\xa9     12345\n");
}

TEST(TableTest, WithoutRowsIsEmpty)
{
    EXPECT_EQ(layOut({}, {ALIGNMENT::LEFT}), "");
}

} // namespace

} // namespace tool::test
