#pragma once

#include "report/Results.h"

#include <ostream>

namespace bench
{

/// Prints the tables as Markdown, whose columns line up when they are read as plain text.
void printTables(std::ostream& stream, const Results& results);

} // namespace bench
