#pragma once

#include <cstddef>
#include <string>

namespace bench
{

/// Returns the source of script `number`, a few functions of `size` bytes or a little more.
std::string makeScriptSource(std::size_t number, std::size_t size);

/// Returns a project's script list of about `size` bytes, with scripts of about 10 KB.
std::string makeProjectText(std::size_t size);

} // namespace bench
