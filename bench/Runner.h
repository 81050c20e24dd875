#pragma once

#include "Row.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

/// The times of one variant, in nanoseconds of processor time per operation.
struct Timing
{
    std::vector<double> repetitions; // in the order of measurement
    double median = 0.0;
};

/// Prepares the framework. Has to come before the first measurement.
void initialiseMeasuring();

/// Runs the variants of one row in turn, `repetitions` times each and in random order, and returns
/// their times. Each is run twice before: the first results have to agree, and the interpreter's
/// compiler gets to know the script.
std::vector<Timing> measure(
    const std::string& name,
    const std::vector<Variant>& variants,
    const std::vector<std::size_t>& operations,
    int repetitions);

} // namespace bench
