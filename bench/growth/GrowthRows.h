#pragma once

#include "Row.h"

#include <cstddef>
#include <string>
#include <vector>

namespace bench
{

using GrowthRowList = std::vector<GrowthRow>;

/// How much of everything there is, and how much is done in one timed run.
struct GrowthScale
{
    std::vector<std::size_t> counts;       // of things that are there
    std::vector<std::size_t> entityCounts; // of entities in a table
    std::size_t calls;                     // operations of nanoseconds
    std::size_t declarations;              // operations of microseconds
};

/// Returns the rows that show whether an operation stays as fast with more and more of something.
GrowthRowList makeGrowthRows(bool isSmoke);

// Each adds the rows of some things.

void addDeclarationGrowth(GrowthRowList& rows, const GrowthScale& scale);
void addRegistryGrowth(GrowthRowList& rows, const GrowthScale& scale);
void addEntityGrowth(GrowthRowList& rows, const GrowthScale& scale);

} // namespace bench
