#pragma once

#include <string>
#include <string_view>

namespace tool
{

/// A message of the interpreter, with its position.
struct PlacedMessage
{
    int line = 0; // 0: the message names no line of the source
    std::string text;
};

/// Returns the name of a chunk in the interpreter's messages. The interpreter derives it from the
/// source's first line, so two sources that begin alike share it.
std::string chunkIdOf(std::string_view source);

/// Splits chunk name and line from a message, if the message begins with those of `source`.
/// Otherwise the text is the whole message.
PlacedMessage placeMessage(std::string_view message, std::string_view source);

} // namespace tool
