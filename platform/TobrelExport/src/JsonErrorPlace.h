#pragma once

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>

namespace tbExport::json
{

/// "line 3, column 14: " in front of `error`, for the place `offset` in `text`.
tbMemory::String
describeError(tbMemory::StringView text, std::size_t offset, tbMemory::StringView error);

/// The line around that place, cut to a readable length and marked there.
tbMemory::String describeContext(tbMemory::StringView text, std::size_t offset);

} // namespace tbExport::json
