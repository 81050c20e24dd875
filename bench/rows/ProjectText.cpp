#include "rows/ProjectText.h"

namespace bench
{

namespace
{

constexpr std::size_t SCRIPT_SIZE = 10'000;

// One function, with what sources usually have: a comment, texts, tables and control flow.
std::string makeFunction(std::size_t script, std::size_t number)
{
    const std::string name = "patrol" + std::to_string(script) + "_" + std::to_string(number);
    return "-- Walks between two points until something \"interesting\" turns up.\n"
           "function " +
           name +
           "(entity, points, limit)\n"
           "\tlocal step = entity.speed * " +
           std::to_string(number % 7 + 1) +
           "\n"
           "\tfor index, point in ipairs(points) do\n"
           "\t\tif index > (limit or 8) then break end\n"
           "\t\tlocal dx, dy = point.x - entity.x, point.y - entity.y\n"
           "\t\tif dx * dx + dy * dy < step * step then\n"
           "\t\t\tentity.state = { name = 'arrived', at = index, said = \"hm?\" }\n"
           "\t\telse\n"
           "\t\t\tentity.x, entity.y = entity.x + dx * 0.5, entity.y + dy * 0.5\n"
           "\t\tend\n"
           "\tend\n"
           "\treturn entity.state ~= nil\n"
           "end\n\n";
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text)
    {
        switch (c)
        {
        case '"':
            result += "\\\"";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\t':
            result += "\\t";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace

std::string makeScriptSource(std::size_t number, std::size_t size)
{
    std::string source;
    for (std::size_t function = 0; source.size() < size; ++function)
        source += makeFunction(number, function);
    return source;
}

std::string makeProjectText(std::size_t size)
{
    std::string text = "{\n  \"scripts\": [\n";
    for (std::size_t script = 0; text.size() < size; ++script)
    {
        if (script > 0)
            text += ",\n";
        text += "    {\n      \"name\": \"script" + std::to_string(script) +
                "\",\n      \"type\": \"lua\",\n      \"sources\": \"" +
                escaped(makeScriptSource(script, SCRIPT_SIZE)) + "\"\n    }";
    }
    return text + "\n  ]\n}\n";
}

} // namespace bench
