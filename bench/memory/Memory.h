#pragma once

#include "report/Results.h"

#include <vector>

namespace bench
{

/// Measures what single things take, and what stays after many operations.
std::vector<MemoryResult> measureMemory(bool isSmoke);

} // namespace bench
