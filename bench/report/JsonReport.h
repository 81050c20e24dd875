#pragma once

#include "report/Results.h"

#include <tbMemory/String.h>

namespace bench
{

/// Returns everything that was measured as a JSON document, each repetition included.
tbMemory::String makeJsonReport(const Results& results);

} // namespace bench
