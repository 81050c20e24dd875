#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tables
{

enum class ALIGNMENT : std::int32_t
{
    LEFT,
    RIGHT
};

using Row = std::vector<std::string>;

/// Returns the rows as lines with aligned columns, two blanks between them and none at the end of a
/// line. All rows have as many cells as there are alignments.
std::string layOut(const std::vector<Row>& rows, const std::vector<ALIGNMENT>& alignments);

/// Returns the rows, of which the first is the heading, as a table in Markdown whose columns line
/// up when it is read as plain text.
std::string
layOutAsMarkdown(const std::vector<Row>& rows, const std::vector<ALIGNMENT>& alignments);

} // namespace tables
