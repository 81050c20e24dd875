#include "support/Workload.h"

namespace bench
{

double twice(double number)
{
    return number * 2.0;
}

double sumOfEight(double a, double b, double c, double d, double e, double f, double g, double h)
{
    return a + b + c + d + e + f + g + h;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

double massOf(const Body& body)
{
    return body.mass;
}

Body sumOf(const Body& left, const Body& right)
{
    Body sum;
    sum.value = left.value + right.value;
    sum.mass = left.mass + right.mass;
    return sum;
}

bool isLess(const Body& left, const Body& right)
{
    return left.value < right.value;
}

double& elementOf(Body& body, int index)
{
    const bool isElement = index >= 1 && index <= static_cast<int>(Body::SIZE);
    return body.elements[isElement ? static_cast<std::size_t>(index - 1) : 0];
}

} // namespace bench
