#include "docs/DocumentPage.h"

#include <fstream>

namespace tbScripts::test
{

namespace
{

std::ifstream open(const std::string& page)
{
    return std::ifstream(TBSCRIPTS_TESTS_FOLDER "/../docs/" + page);
}

// What stands between the first two backticks from `begin` on.
std::string spanFrom(const std::string& line, std::size_t begin)
{
    const std::size_t first = line.find('`', begin);
    return first == std::string::npos
               ? ""
               : line.substr(first + 1, line.find('`', first + 1) - first - 1);
}

} // namespace

std::vector<std::string> blocksOf(const std::string& page, const std::string& language)
{
    std::vector<std::string> blocks;
    bool isInside = false;
    bool isWanted = false;
    std::ifstream stream = open(page);
    for (std::string line; std::getline(stream, line);)
    {
        if (line.rfind("```", 0) == 0)
        {
            isWanted = !isInside && line == "```" + language;
            isInside = !isInside;
            if (isWanted)
                blocks.emplace_back();
        }
        else if (isWanted)
        {
            blocks.back() += line + '\n';
        }
    }
    return blocks;
}

std::vector<std::pair<std::string, std::string>>
rowsOf(const std::string& page, const std::string& head)
{
    std::vector<std::pair<std::string, std::string>> rows;
    std::ifstream stream = open(page);
    std::string line;
    while (std::getline(stream, line) && line.rfind(head, 0) != 0)
        ;
    std::getline(stream, line); // between the head and the rows
    while (std::getline(stream, line) && line.rfind("| ", 0) == 0)
        rows.emplace_back(spanFrom(line, 0), spanFrom(line, line.find('|', 1)));
    return rows;
}

} // namespace tbScripts::test
