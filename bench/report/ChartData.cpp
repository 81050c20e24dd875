#include "report/ChartData.h"

#include <cmath>
#include <iomanip>
#include <sstream>

namespace bench
{

namespace
{

const char* verdictOf(const RatioResult& ratio)
{
    if (!ratio.hasGoal())
        return "none";
    return ratio.isMet() ? "met" : "missed";
}

// Ways other than the first have the name of the operation above them.
std::string nameOf(const RatioResult& ratio)
{
    if (ratio.rival.kind != RIVAL_KIND::BINDING)
        return ratio.name + " : " + ratio.rival.name;
    return ratio.way == WAY::DESCRIBED ? ratio.name : textOf(ratio.way);
}

void addLine(std::ostream& lines, const RatioResult& ratio)
{
    const double goal = ratio.hasGoal() ? ratio.goal : std::nan("");
    lines << nameOf(ratio) << '\t' << ratio.getRatio() << '\t' << goal << '\t' << verdictOf(ratio)
          << '\n';
}

} // namespace

std::string makeChartData(const Results& results)
{
    std::ostringstream lines;
    lines << std::fixed << std::setprecision(3);
    std::string subject;
    for (const RatioResult& ratio : results.ratios)
    {
        if (ratio.subject != subject)
            lines << ratio.subject << "\tnan\tnan\theading\n";
        subject = ratio.subject;
        addLine(lines, ratio);
    }
    return lines.str();
}

} // namespace bench
