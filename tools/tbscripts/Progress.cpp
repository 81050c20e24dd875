#include "tbscripts/Progress.h"

#include "port/Terminal.h"

#include <cstdio>
#include <string>

namespace tool
{

namespace
{

constexpr std::size_t LEAST_TOTAL = 500; // less takes no noticeable time
constexpr std::size_t PIECES_BETWEEN_LINES = 50;

} // namespace

Progress::Progress(std::size_t total)
    : m_total(total)
    , m_isWanted(total >= LEAST_TOTAL && tbScripts::port::isErrorTerminal())
{
}

Progress::~Progress()
{
    hide();
}

void Progress::advance()
{
    ++m_done;
    if (!m_isWanted || m_done % PIECES_BETWEEN_LINES != 0)
        return;
    const std::string line =
        "checking file " + std::to_string(m_done) + " of " + std::to_string(m_total);
    std::fputs(('\r' + line).c_str(), stderr);
    m_shownLetters = line.size();
}

void Progress::hide()
{
    if (m_shownLetters == 0)
        return;
    std::fputs(('\r' + std::string(m_shownLetters, ' ') + '\r').c_str(), stderr);
    m_shownLetters = 0;
}

} // namespace tool
