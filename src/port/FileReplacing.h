#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>

// Writing files so that each is the old or the new one at every moment, also after a crash or on a
// full disk.
//
// Why: docs/decisions/0011-saving-replaces-files.md, 0023-what-differs-between-platforms.md

namespace tbScripts::port
{

enum class REPLACING : std::int32_t
{
    DONE,
    NO_NEW_FILE, // there can be none beside the old one
    NO_ROOM,     // none, because the disk is full
    NOT_WRITTEN, // not wholly, so that the old file stays
    NOT_PLACED   // written, but it may not take the old one's place: another owner's, a mounted one
};

/// How a replacement ended.
struct Replacement
{
    REPLACING replacing = REPLACING::DONE;
    std::error_code reason; // unless it is done
};

/// Whether the bytes and the new name are on the disk on return.
enum class FLUSH : std::int32_t
{
    NOW,
    LATER // by `flushFolder`: many files at once
};

/// Writes `bytes` to a new file beside `file` and puts the new one in the place of `file`, with the
/// permissions of the old one if there is one, and its owner where that is allowed. The last part
/// of `file` must not be a link that is to be followed. A crash may leave a file
/// ".tbscripts-<numbers>.tmp".
Replacement replaceFile(const std::filesystem::path& file, std::string_view bytes, FLUSH flush);

/// Has everything written below `folder` reach the disk, and returns why that failed.
std::error_code flushFolder(const std::string& folder);

} // namespace tbScripts::port
