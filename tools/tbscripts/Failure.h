#pragma once

#include "tbscripts/Escaping.h"
#include "tbscripts/SourcePosition.h"

#include <tbScripts/Script.h>

#include <optional>
#include <string>
#include <string_view>

namespace tool
{

/// Compiles a script and returns why that failed, nothing on success.
std::optional<PlacedMessage> compile(tbScripts::Script& script);

/// Returns what the library's message about a script says behind its own beginning.
std::string_view
reasonIn(std::string_view message, std::string_view beginning, std::string_view scriptName);

/// Returns a failure as "file:line: message", without the line if it is not known. With its layout
/// kept, the message's own further lines are indented.
std::string
describe(std::string_view label, const PlacedMessage& failure, LAYOUT layout = LAYOUT::ESCAPED);

} // namespace tool
