#pragma once

#include "Row.h"
#include "Runner.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

/// One way through the library against one rival.
struct RatioResult
{
    std::string subject;
    std::string name;
    WAY way;
    Rival rival;
    double goal; // 0 for none
    Timing library;
    Timing other;

    double getRatio() const { return library.median / other.median; }

    bool hasGoal() const { return goal > 0.0; }

    /// As the table shows it: to two digits behind the point.
    bool isMet() const { return getRatio() < goal + 0.005; }
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

/// Ratios against hand-written code in one line.
struct MeanResult
{
    std::string name;
    std::size_t rows = 0;
    double mean = 0.0; // geometric
    double highest = 0.0;
    double goal = 0.0; // of the mean

    bool isMet() const { return mean < goal + 0.005; }
};

/// The ratios of one operation against hand-written code, one for each way.
struct BindingResult
{
    std::vector<const RatioResult*> ways;

    const RatioResult& getBest() const;

    /// Returns null if the operation was not measured in this way.
    const RatioResult* find(WAY way) const;
};

/// What a way is called in reports.
const char* textOf(WAY way);

struct Results
{
    std::vector<RatioResult> ratios;
    std::vector<GrowthResult> growth;
    std::vector<MemoryResult> memory;
    int repetitions = 0;

    /// The ratios against hand-written code, by operations.
    std::vector<BindingResult> getBindings() const;

    /// The ratios against hand-written code, summed up: those of each way over the rows that have
    /// it, and those of all rows, each at the best that the library offers.
    std::vector<MeanResult> getMeans() const;
};

} // namespace bench
