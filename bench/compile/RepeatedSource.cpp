#include "RepeatedSource.h"

#include <sstream>

namespace bench
{

namespace
{

constexpr const char* BEGIN = "// [each]";
constexpr const char* END = "// [/each]";

std::string withNumber(std::string text, int number)
{
    for (const char* const name : {"Unit0", "unit0"})
    {
        for (std::size_t at = text.find(name); at != std::string::npos;
             at = text.find(name, at + 1))
            text.replace(at + 4, 1, std::to_string(number));
    }
    return text;
}

} // namespace

std::string repeatMarked(const std::string& source, int count)
{
    std::istringstream lines(source);
    std::string result;
    std::string marked;
    bool isMarked = false;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find(BEGIN) != std::string::npos)
        {
            isMarked = true;
        }
        else if (line.find(END) != std::string::npos)
        {
            isMarked = false;
            for (int i = 0; i < count; ++i)
                result += withNumber(marked, i);
            marked.clear();
        }
        else
        {
            (isMarked ? marked : result) += line + '\n';
        }
    }
    return result;
}

} // namespace bench
