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
    std::string_view bytes; // valid until: the document is destroyed
};

/// The files that unpacking a document would write, and the reasons against it.
struct UnpackPlan
{
    std::vector<PlannedFile> files;
    std::vector<std::string> troubles; // each begins with an element or a file
};

/// Creates the plan without looking at the disk.
UnpackPlan planUnpacking(const Document& document);

/// Adds the reasons on the disk against writing the files below `folder`: links that may lead
/// elsewhere, folders or devices of the same names, and, unless `mayOverwrite`, existing files.
void checkAgainstDisk(UnpackPlan& plan, const std::string& folder, bool mayOverwrite);

} // namespace tool
