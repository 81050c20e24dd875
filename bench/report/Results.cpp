#include "report/Results.h"

#include <algorithm>
#include <cmath>

namespace bench
{

namespace
{

bool isFaster(const RatioResult* left, const RatioResult* right)
{
    return left->getRatio() < right->getRatio();
}

MeanResult
meanOf(const std::string& name, const std::vector<const RatioResult*>& ratios, double goal)
{
    MeanResult result{name, ratios.size(), 0.0, 0.0, goal};
    if (ratios.empty())
        return result;
    double sumOfLogarithms = 0.0;
    for (const RatioResult* const ratio : ratios)
        sumOfLogarithms += std::log(ratio->getRatio());
    result.mean = std::exp(sumOfLogarithms / static_cast<double>(ratios.size()));
    result.highest = (*std::max_element(ratios.begin(), ratios.end(), &isFaster))->getRatio();
    return result;
}

} // namespace

const RatioResult& BindingResult::getBest() const
{
    return **std::min_element(ways.begin(), ways.end(), &isFaster);
}

const RatioResult* BindingResult::find(WAY way) const
{
    for (const RatioResult* const ratio : ways)
    {
        if (ratio->way == way)
            return ratio;
    }
    return nullptr;
}

const char* textOf(WAY way)
{
    switch (way)
    {
    case WAY::DESCRIBED:
        return "described";
    case WAY::TYPED:
        return "typed";
    case WAY::LEAF:
        return "leaf";
    }
    return "";
}

std::vector<BindingResult> Results::getBindings() const
{
    std::vector<BindingResult> bindings;
    for (const RatioResult& ratio : ratios)
    {
        if (ratio.rival.kind != RIVAL_KIND::BINDING)
            continue;
        const RatioResult* const last = bindings.empty() ? nullptr : bindings.back().ways.front();
        if (!last || last->subject != ratio.subject || last->name != ratio.name)
            bindings.emplace_back();
        bindings.back().ways.push_back(&ratio);
    }
    return bindings;
}

std::vector<MeanResult> Results::getMeans() const
{
    struct WayGoal
    {
        WAY way;
        double goal;
    };

    constexpr WayGoal GOALS[] = {{WAY::DESCRIBED, 1.15}, {WAY::TYPED, 1.05}, {WAY::LEAF, 0.2}};
    constexpr double GOAL_OF_BEST = 0.5;

    const std::vector<BindingResult> bindings = getBindings();
    std::vector<MeanResult> means;
    for (const WayGoal& wanted : GOALS)
    {
        std::vector<const RatioResult*> ofWay;
        for (const BindingResult& binding : bindings)
        {
            if (const RatioResult* const ratio = binding.find(wanted.way))
                ofWay.push_back(ratio);
        }
        means.push_back(meanOf(textOf(wanted.way), ofWay, wanted.goal));
    }
    std::vector<const RatioResult*> best;
    for (const BindingResult& binding : bindings)
        best.push_back(&binding.getBest());
    means.push_back(meanOf("best", best, GOAL_OF_BEST));
    return means;
}

} // namespace bench
