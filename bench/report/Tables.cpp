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

void printBindings(std::ostream& stream, const Results& results)
{
    std::vector<Cells> rows{{"operation", "library ns", "hand-written ns", "ratio", "goal", "met"}};
    std::string subject;
    for (const RatioResult& ratio : results.ratios)
    {
        if (ratio.rival.kind != RIVAL_KIND::BINDING)
            continue;
        if (ratio.subject != subject)
            rows.push_back({"**" + ratio.subject + "**", "", "", "", "", ""});
        subject = ratio.subject;
        rows.push_back(
            {ratio.name,
             timeText(ratio.library.median),
             timeText(ratio.other.median),
             ratioText(ratio.getRatio()),
             ratioText(ratio.rival.goal),
             verdict(ratio)});
    }
    if (rows.size() == 1)
        return;
    const double mean = results.getMean();
    rows.push_back(
        {"**geometric mean**", "", "", ratioText(mean), "1.00", mean < 1.005 ? "yes" : "NO"});
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
             ratio.hasGoal() ? ratioText(ratio.rival.goal) : "",
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
