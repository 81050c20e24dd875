#pragma once

#include "report/Results.h"

#include <string>

namespace bench
{

/// Returns an SVG picture of the ratios as bars, with a line where both sides are equally fast and
/// a mark at each goal.
std::string makeRatioChart(const Results& results);

} // namespace bench
