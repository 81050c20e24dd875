#pragma once

#include "Row.h"
#include "Runner.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

/// One line of the table: the library against one rival.
struct RatioResult
{
    std::string subject;
    std::string name;
    Rival rival;
    Timing library;
    Timing other;

    double getRatio() const { return library.median / other.median; }

    bool hasGoal() const { return rival.goal > 0.0; }

    /// As the table shows it: to two digits behind the point.
    bool isMet() const { return getRatio() < rival.goal + 0.005; }
};

/// One line of the table of growth: times per operation beside the counts.
struct GrowthResult
{
    std::string name;
    std::string countOf;
    std::vector<std::size_t> counts;
    std::vector<Timing> timings;

    double getFactor() const { return timings.back().median / timings.front().median; }
};

/// One line of the table of memory, in bytes.
struct MemoryResult
{
    std::string name;
    double library = 0.0;
    double other = 0.0;
    std::string otherName; // empty if there is nothing to compare with
};

struct Results
{
    std::vector<RatioResult> ratios;
    std::vector<GrowthResult> growth;
    std::vector<MemoryResult> memory;
    int repetitions = 0;

    /// The geometric mean of the ratios against hand-written code.
    double getMean() const;
};

} // namespace bench
