#pragma once

#include <tbScripts/Environment.h>

#include <ostream>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// One form of access to a global.
struct GlobalOperation
{
    const char* name;
    bool isWriting;

    /// Performs it on `global` and returns its answer as a text, "done" if it has none.
    std::string (*perform)(Environment& environment, const char* global);

    const char* neutralAnswer; // what it answers when it fails
};

std::ostream& operator<<(std::ostream& stream, const GlobalOperation& operation);

/// Returns every form in which a host reads and writes globals, the declaration of functions
/// included.
std::vector<GlobalOperation> allGlobalOperations();

} // namespace tbScripts::test
