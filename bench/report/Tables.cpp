#include "report/Tables.h"

#include "tables/Table.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace bench
{

namespace
{

using Cells = tables::Row;

// Three digits or a little more.
std::string textOf(double value)
{
    char text[32];
    const int digits = std::abs(value) < 100.0 ? 1 : 0;
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

// Nanoseconds, unless another unit is named.
std::string timeText(double nanoseconds)
{
    constexpr double NANOSECONDS_PER_MICROSECOND = 1e3;
    constexpr double NANOSECONDS_PER_MILLISECOND = 1e6;
    if (nanoseconds >= NANOSECONDS_PER_MILLISECOND)
        return textOf(nanoseconds / NANOSECONDS_PER_MILLISECOND) + " ms";
    if (nanoseconds >= 10 * NANOSECONDS_PER_MICROSECOND)
        return textOf(nanoseconds / NANOSECONDS_PER_MICROSECOND) + " us";
    return textOf(nanoseconds);
}

std::string ratioText(double ratio)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", ratio);
    return text;
}

// The first of `rows` is the heading; the first column is text, all others are numbers.
void printTable(std::ostream& stream, const std::vector<Cells>& rows)
{
    std::vector<tables::ALIGNMENT> alignments(rows.front().size(), tables::ALIGNMENT::RIGHT);
    alignments.front() = tables::ALIGNMENT::LEFT;
    stream << tables::layOutAsMarkdown(rows, alignments);
}

std::string verdict(const RatioResult& ratio)
{
    if (!ratio.hasGoal())
        return "";
    return ratio.isMet() ? "yes" : "NO";
}

std::string ratioText(const RatioResult* ratio)
{
    return ratio ? ratioText(ratio->getRatio()) : "";
}

// The ways that miss their goals.
std::string missedWays(const BindingResult& binding)
{
    std::string names;
    for (const RatioResult* const ratio : binding.ways)
    {
        if (ratio->hasGoal() && !ratio->isMet())
            names += (names.empty() ? "" : ", ") + std::string(textOf(ratio->way));
    }
    return names;
}

Cells bindingCells(const BindingResult& binding)
{
    const RatioResult& first = *binding.ways.front();
    return {
        first.name,
        timeText(first.other.median),
        ratioText(binding.find(WAY::DESCRIBED)),
        ratioText(binding.find(WAY::TYPED)),
        ratioText(binding.find(WAY::LEAF)),
        ratioText(&binding.getBest()),
        missedWays(binding)};
}

void printMeans(std::ostream& stream, const Results& results)
{
    std::vector<Cells> rows{{"ratios", "rows", "geometric mean", "goal", "met", "highest"}};
    for (const MeanResult& mean : results.getMeans())
    {
        if (mean.rows > 0)
            rows.push_back(
                {mean.name,
                 std::to_string(mean.rows),
                 ratioText(mean.mean),
                 ratioText(mean.goal),
                 mean.isMet() ? "yes" : "NO",
                 ratioText(mean.highest)});
    }
    printTable(stream, rows);
    stream << '\n';
}

void printBindings(std::ostream& stream, const Results& results)
{
    std::vector<Cells> rows{
        {"operation", "hand-written ns", "described", "typed", "leaf", "best", "goals missed"}};
    std::string subject;
    for (const BindingResult& binding : results.getBindings())
    {
        const RatioResult& first = *binding.ways.front();
        if (first.subject != subject)
            rows.push_back({"**" + first.subject + "**", "", "", "", "", "", ""});
        subject = first.subject;
        rows.push_back(bindingCells(binding));
    }
    if (rows.size() == 1)
        return;
    printMeans(stream, results);
    printTable(stream, rows);
    stream << '\n';
}

void printOthers(std::ostream& stream, const Results& results)
{
    std::vector<Cells> rows{
        {"work", "other side", "library ns", "other ns", "ratio", "goal", "met"}};
    for (const RatioResult& ratio : results.ratios)
    {
        if (ratio.rival.kind == RIVAL_KIND::BINDING)
            continue;
        rows.push_back(
            {ratio.name,
             ratio.rival.name,
             timeText(ratio.library.median),
             timeText(ratio.other.median),
             ratioText(ratio.getRatio()),
             ratio.hasGoal() ? ratioText(ratio.goal) : "",
             verdict(ratio)});
    }
    if (rows.size() == 1)
        return;
    printTable(stream, rows);
    stream << '\n';
}

void printGrowth(std::ostream& stream, const Results& results)
{
    for (std::size_t i = 0; i < results.growth.size(); ++i)
    {
        const GrowthResult& growth = results.growth[i];
        // One table for each list of counts: they follow each other.
        std::vector<Cells> rows{{"operation, in ns", "with"}};
        for (const std::size_t count : growth.counts)
            rows[0].push_back(std::to_string(count));
        rows[0].push_back("last : first");
        for (; i < results.growth.size() && results.growth[i].counts == growth.counts; ++i)
        {
            const GrowthResult& line = results.growth[i];
            rows.push_back({line.name, line.countOf});
            for (const Timing& timing : line.timings)
                rows.back().push_back(timeText(timing.median));
            rows.back().push_back(ratioText(line.getFactor()));
        }
        --i;
        printTable(stream, rows);
        stream << '\n';
    }
}

void printMemory(std::ostream& stream, const Results& results)
{
    std::vector<Cells> rows{{"bytes", "library", "other", "what the other is"}};
    for (const MemoryResult& memory : results.memory)
    {
        rows.push_back(
            {memory.name,
             textOf(memory.library),
             memory.otherName.empty() ? "" : textOf(memory.other),
             memory.otherName});
    }
    if (rows.size() > 1)
        printTable(stream, rows);
}

} // namespace

void printTables(std::ostream& stream, const Results& results)
{
    printBindings(stream, results);
    printOthers(stream, results);
    printGrowth(stream, results);
    printMemory(stream, results);
}

} // namespace bench
