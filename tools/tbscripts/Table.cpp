#include "tbscripts/Table.h"

#include "tbscripts/Escaping.h"

#include <algorithm>

namespace tool
{

namespace
{

constexpr std::size_t BLANKS_BETWEEN = 2;

std::size_t widthOf(const std::vector<Row>& rows, std::size_t column)
{
    std::size_t width = 0;
    for (const Row& row : rows)
        width = std::max(width, countLetters(row[column]));
    return width;
}

std::string pad(const std::string& cell, std::size_t width, ALIGNMENT alignment)
{
    const std::string blanks(width - countLetters(cell), ' ');
    return alignment == ALIGNMENT::LEFT ? cell + blanks : blanks + cell;
}

} // namespace

std::string layOut(const std::vector<Row>& rows, const std::vector<ALIGNMENT>& alignments)
{
    std::vector<std::size_t> widths;
    for (std::size_t column = 0; column < alignments.size(); ++column)
        widths.push_back(widthOf(rows, column));

    std::string text;
    for (const Row& row : rows)
    {
        std::string line;
        for (std::size_t column = 0; column < alignments.size(); ++column)
        {
            line += column == 0 ? "" : std::string(BLANKS_BETWEEN, ' ');
            line += pad(row[column], widths[column], alignments[column]);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

} // namespace tool
