#pragma once

#include <string>

namespace bench
{

/// Returns `source` with each run of lines between `// [each]` and `// [/each]` `count` times, the
/// numbers of `Unit0` and `unit0` counting up from 0.
std::string repeatMarked(const std::string& source, int count);

} // namespace bench
