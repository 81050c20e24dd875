#pragma once

#include "support/Bytes.h"

#include <string>

namespace tbScripts::fuzz
{

/// Returns a script of a few statements, which use what random calls declare. Sets `mayLeak` if it
/// may take a finaliser away or change who owns an instance.
std::string anyScriptText(Bytes& bytes, bool& mayLeak);

} // namespace tbScripts::fuzz
