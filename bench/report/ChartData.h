#pragma once

#include "report/Results.h"

#include <string>

namespace bench
{

/// Returns the ratios as lines that bench/ratios.gp draws: name, ratio, goal, and "met", "missed",
/// "none" or "heading", separated by tabs. A number that does not exist is "nan".
std::string makeChartData(const Results& results);

} // namespace bench
