#include "tbscripts/Failure.h"

#include <cstdint>

namespace tool
{

namespace
{

// So that no line of a message looks like another message.
std::string indentFurtherLines(const std::string& text)
{
    std::string result;
    for (const char letter : text)
    {
        result += letter;
        if (letter == '\n')
            result += "    ";
    }
    return result;
}

} // namespace

std::optional<PlacedMessage> compile(tbScripts::Script& script)
{
    if (script.load())
        return std::nullopt;
    const tbScripts::CompilationResult& result = script.getLastCompilationResult();
    if (result.errorCode == tbScripts::COMPILATION_NO_INTERPRETER)
        return PlacedMessage{0, "the type is not \"lua\""};
    const std::string_view reason =
        reasonIn(result.message, "Error while compiling script '", script.getName());
    return placeMessage(reason, script.getSources());
}

std::string_view
reasonIn(std::string_view message, std::string_view beginning, std::string_view scriptName)
{
    const std::string expected = std::string(beginning) + std::string(scriptName) + "' : ";
    if (message.substr(0, expected.size()) == expected)
        message.remove_prefix(expected.size());
    return message;
}

std::string describe(std::string_view label, const PlacedMessage& failure, LAYOUT layout)
{
    const std::string place = failure.line == 0 ? "" : ':' + std::to_string(failure.line);
    return std::string(label) + place + ": " + indentFurtherLines(escape(failure.text, layout));
}

} // namespace tool
