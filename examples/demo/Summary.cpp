#include "demo/Summary.h"

#include <cmath>
#include <iomanip>
#include <iostream>
#include <string>

namespace demo
{

namespace
{

constexpr int NAME_WIDTH = 26;
constexpr int NUMBER_WIDTH = 12;

} // namespace

void Summary::begin(const char* title, const char* first, const char* second)
{
    std::cout << std::left << std::setw(NAME_WIDTH) << title << std::right
              << std::setw(NUMBER_WIDTH) << first << std::setw(NUMBER_WIDTH) << second << '\n';
}

void Summary::compare(const char* what, double first, double second, int decimals)
{
    // The sum of the ways is one of fractions; everything else is exact.
    const bool isSame = std::abs(first - second) < 1e-6;
    std::cout << "  " << std::left << std::setw(NAME_WIDTH - 2) << what << std::right << std::fixed
              << std::setprecision(decimals) << std::setw(NUMBER_WIDTH) << first
              << std::setw(NUMBER_WIDTH) << second << (isSame ? "" : "   <- differs") << '\n';
    m_differences += isSame ? 0 : 1;
}

void Summary::expectNone(const char* what, int count)
{
    std::cout << "  " << std::left << std::setw(NAME_WIDTH - 2) << what << std::right
              << std::setw(NUMBER_WIDTH) << (count == 0 ? "none" : std::to_string(count))
              << (count == 0 ? "" : "   <- differs") << '\n';
    m_differences += count == 0 ? 0 : 1;
}

bool Summary::finish() const
{
    std::cout << (m_differences == 0 ? "Host and scripts agree.\n" : "Host and scripts DIFFER.\n");
    return m_differences == 0;
}

} // namespace demo
