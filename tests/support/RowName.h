#pragma once

#include <gtest/gtest.h>

#include <string>

namespace tbScripts::test
{

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
