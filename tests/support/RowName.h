#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

/// Prints a row as its member `row`. Combinations of rows in an unnamed namespace need
/// `using test::operator<<;` there.
template <typename Row, typename = decltype(std::declval<const Row&>().row)>
std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.row;
}

/// What tests of rows hold for GoogleTest, which prints it as the name of the row.
template <typename Row>
struct NamedRow
{
    NamedRow(const Row& given) // NOLINT(google-explicit-constructor): tables hold rows
        : content(given)
        , row(given.row)
    {
    }

    Row content;
    std::string row;
};

/// A fixture whose tests run once for each of some values.
template <typename Fixture, typename Value>
class OnValues : public Fixture, public ::testing::WithParamInterface<Value>
{
};

/// A fixture whose tests run once for each row of a table (`ROWS`).
template <typename Fixture, typename Row>
class OnRows : public Fixture, public ::testing::WithParamInterface<NamedRow<Row>>
{
public:
    using Table = std::vector<NamedRow<Row>>;

    static Table named(const std::vector<Row>& rows) { return Table(rows.begin(), rows.end()); }

    static const Row& GetParam()
    {
        return ::testing::WithParamInterface<NamedRow<Row>>::GetParam().content;
    }
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

/// The table of an `OnRows` suite: rows in braces, or a vector of them. Each row is a case of every
/// test of the suite.
#define ROWS(suite, ...)                                                                           \
    INSTANTIATE_TEST_SUITE_P(                                                                      \
        Rows,                                                                                      \
        suite,                                                                                     \
        ::testing::ValuesIn(suite::named({__VA_ARGS__})),                                          \
        ::tbScripts::test::RowName())

/// The values of an `OnValues` suite, from a generator of GoogleTest; each is named as it prints.
#define VALUES(suite, ...)                                                                         \
    INSTANTIATE_TEST_SUITE_P(Values, suite, __VA_ARGS__, ::testing::PrintToStringParamName())
