#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tool
{

enum class ALIGNMENT : std::int32_t
{
    LEFT,
    RIGHT
};

using Row = std::vector<std::string>;

/// Returns the rows as lines with aligned columns, two blanks between them and none at the end of a
/// line. All rows have as many cells, already escaped, as there are alignments.
std::string layOut(const std::vector<Row>& rows, const std::vector<ALIGNMENT>& alignments);

} // namespace tool
