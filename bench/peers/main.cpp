// Measures one other binder against hand-written code, by the rows that TobrelScriptsBench measures
// this library by: so the ratios of both can be compared.

#include "peers/PeerRows.h"
#include "support/Failure.h"
#include "tables/Table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iostream>

namespace
{

using namespace bench;

constexpr std::size_t OPERATIONS = 200'000;
constexpr int REPETITIONS = 11;

struct Side
{
    PeerLoop loop;
    std::vector<double> nanoseconds; // of each repetition, per operation
};

void measureOnce(Side& side)
{
    const std::clock_t begin = std::clock();
    side.loop(OPERATIONS);
    const auto ticks = static_cast<double>(std::clock() - begin);
    side.nanoseconds.push_back(ticks * 1e9 / CLOCKS_PER_SEC / static_cast<double>(OPERATIONS));
}

double medianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::string number(double value, int digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

// Adds a line to the table and returns the ratio.
double measureRow(const PeerRow& row, std::vector<tables::Row>& lines)
{
    Side peer{row.begin(getPeer()), {}};
    Side byHand{row.begin(getByHand()), {}};
    // Twice, so that the interpreter's compiler knows the script.
    for (int i = 0; i < 2; ++i)
    {
        if (peer.loop(OPERATIONS) != byHand.loop(OPERATIONS))
            fail(row.name + ": the sides differ in what they do");
    }
    for (int i = 0; i < REPETITIONS; ++i)
    {
        measureOnce(peer);
        measureOnce(byHand);
    }
    const double ratio = medianOf(peer.nanoseconds) / medianOf(byHand.nanoseconds);
    lines.push_back(
        {row.name,
         number(medianOf(peer.nanoseconds), 1),
         number(medianOf(byHand.nanoseconds), 1),
         number(ratio, 2)});
    return ratio;
}

} // namespace

int main()
{
    std::vector<tables::Row> lines{
        {"operation", std::string(getPeer().name) + " ns", "hand-written ns", "ratio"}};
    double sumOfLogarithms = 0.0;
    for (const PeerRow& row : makePeerRows())
        sumOfLogarithms += std::log(measureRow(row, lines));
    const auto rows = static_cast<double>(lines.size() - 1);
    lines.push_back({"**geometric mean**", "", "", number(std::exp(sumOfLogarithms / rows), 2)});
    using tables::ALIGNMENT;
    std::cout << tables::layOutAsMarkdown(
        lines, {ALIGNMENT::LEFT, ALIGNMENT::RIGHT, ALIGNMENT::RIGHT, ALIGNMENT::RIGHT});
    return 0;
}
