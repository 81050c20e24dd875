#pragma once

#include <string>
#include <string_view>

namespace tool
{

/// A message of the interpreter, with the place that it is about.
struct PlacedMessage
{
    int line = 0; // 0: the message names no line of the source
    std::string text;
};

/// Returns how the interpreter calls a chunk in its messages: derived from the source's first line,
/// and no unique name. Two sources that begin alike share it.
std::string chunkIdOf(std::string_view source);

/// Takes chunk id and line off a message, if it begins with those of `source`. Otherwise the text
/// is the whole message.
PlacedMessage placeMessage(std::string_view message, std::string_view source);

} // namespace tool
