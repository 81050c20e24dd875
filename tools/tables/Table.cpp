#include "tables/Table.h"

#include "tables/CharacterWidth.h"

#include <algorithm>
#include <cstddef>

namespace tables
{

namespace
{

using Alignments = std::vector<ALIGNMENT>;
using Widths = std::vector<std::size_t>;

constexpr std::size_t LEAST_OF_MARKDOWN = 3; // dashes below the heading, the colon included

Widths widthsOf(const std::vector<Row>& rows, std::size_t columns, std::size_t least)
{
    Widths widths(columns, least);
    for (const Row& row : rows)
    {
        for (std::size_t column = 0; column < columns; ++column)
            widths[column] = std::max(widths[column], widthOf(row[column]));
    }
    return widths;
}

std::string pad(const std::string& cell, std::size_t width, ALIGNMENT alignment)
{
    const std::string blanks(width - widthOf(cell), ' ');
    return alignment == ALIGNMENT::LEFT ? cell + blanks : blanks + cell;
}

std::string
join(const Row& row, const Widths& widths, const Alignments& alignments, const char* between)
{
    std::string line;
    for (std::size_t column = 0; column < widths.size(); ++column)
    {
        line += column == 0 ? "" : between;
        line += pad(row[column], widths[column], alignments[column]);
    }
    return line;
}

Row ruleOf(const Widths& widths, const Alignments& alignments)
{
    Row rule;
    for (std::size_t column = 0; column < widths.size(); ++column)
    {
        rule.emplace_back(widths[column], '-');
        if (alignments[column] == ALIGNMENT::RIGHT)
            rule.back().back() = ':';
    }
    return rule;
}

} // namespace

std::string layOut(const std::vector<Row>& rows, const Alignments& alignments)
{
    const Widths widths = widthsOf(rows, alignments.size(), 0);
    std::string lines;
    for (const Row& row : rows)
    {
        std::string line = join(row, widths, alignments, "  ");
        line.erase(line.find_last_not_of(' ') + 1);
        lines += line + '\n';
    }
    return lines;
}

std::string layOutAsMarkdown(const std::vector<Row>& rows, const Alignments& alignments)
{
    const Widths widths = widthsOf(rows, alignments.size(), LEAST_OF_MARKDOWN);
    std::vector<Row> all = rows;
    all.insert(all.begin() + 1, ruleOf(widths, alignments));
    std::string lines;
    for (const Row& row : all)
        lines += "| " + join(row, widths, alignments, " | ") + " |\n";
    return lines;
}

} // namespace tables
