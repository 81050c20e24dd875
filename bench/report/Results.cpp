#include "report/Results.h"

#include <cmath>

namespace bench
{

double Results::getMean() const
{
    double sumOfLogarithms = 0.0;
    std::size_t counted = 0;
    for (const RatioResult& ratio : ratios)
    {
        if (ratio.rival.kind != RIVAL_KIND::BINDING)
            continue;
        sumOfLogarithms += std::log(ratio.getRatio());
        ++counted;
    }
    return counted == 0 ? 0.0 : std::exp(sumOfLogarithms / static_cast<double>(counted));
}

} // namespace bench
