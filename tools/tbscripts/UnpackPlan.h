#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool
{

struct Document;

/// A file to write.
struct PlannedFile
{
    std::string name;       // of the script, as the document has it
    std::string path;       // below the folder
    std::string_view bytes; // valid until: the document ends
};

/// What unpacking a document would write, and what speaks against it.
struct UnpackPlan
{
    std::vector<PlannedFile> files;
    std::vector<std::string> troubles; // each begins with the element or the file it is about
};

/// Plans without looking at the disk.
UnpackPlan planUnpacking(const Document& document);

/// Adds what on the disk speaks against writing the files below `folder`: links that may lead
/// elsewhere, things in the way, and files that exist unless `mayOverwrite`.
void checkAgainstDisk(UnpackPlan& plan, const std::string& folder, bool mayOverwrite);

} // namespace tool
