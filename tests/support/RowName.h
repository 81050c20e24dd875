#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>

namespace tbScripts::test
{

/// Prints a row as its member `row`. Rows in an unnamed namespace need `using test::operator<<;`
/// there.
template <typename Row, typename = decltype(std::declval<const Row&>().row)>
std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.row;
}

/// A fixture whose tests run once for each row of a table.
template <typename Fixture, typename Row>
class OnRows : public Fixture, public ::testing::WithParamInterface<Row>
{
};

/// Names the cases of a table after the member `row` of its rows.
struct RowName
{
    template <typename Row>
    std::string operator()(const ::testing::TestParamInfo<Row>& info) const
    {
        return info.param.row;
    }
};

} // namespace tbScripts::test
