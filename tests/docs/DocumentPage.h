#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tbScripts::test
{

/// Returns what stands between the fences of a page's blocks of code in `language`, which may be
/// empty, in their order; each ends with a line feed. `page` is relative to docs/.
std::vector<std::string> blocksOf(const std::string& page, const std::string& language);

/// Returns the first code span of each of the first two cells of a table's rows, of the one table
/// whose head begins with `head`.
std::vector<std::pair<std::string, std::string>>
rowsOf(const std::string& page, const std::string& head);

} // namespace tbScripts::test
