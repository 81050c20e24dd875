#pragma once

#include <tbMemory/StringView.h>

namespace tbScripts
{

/// Writes `data` to the file `path` and returns whether it could be opened for that.
///
/// Why: docs/decisions/0011-saving-replaces-files.md
///
/// A regular file, or one that does not exist, is written beside its place and then put there, so
/// that it is the old or the new one at every moment, also after a crash or on a full disk; such
/// failures are not reported. A crash may leave a file ".tbscripts-<numbers>.tmp" beside it. Links
/// are followed and permissions kept. What is no regular file, lies in a folder that takes no new
/// ones, or cannot be replaced there, is written in place.
bool replaceFile(const tbMemory::StringView& path, const tbMemory::StringView& data);

} // namespace tbScripts
