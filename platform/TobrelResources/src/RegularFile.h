#pragma once

#include <tbMemory/Buffer.h>

#include <string>

namespace tbResources
{

/// Reads a whole regular file; empty if there is none. The file is opened once, and what was opened
/// is looked at: the path may lead elsewhere by then. A FIFO is not waited for.
tbMemory::Buffer readRegularFile(const std::string& path);

} // namespace tbResources
