#pragma once

// What both bindings offer to scripts. Each operation is a real call: the work itself is the same
// on both sides and small beside the way to it.

#include <array>
#include <cstddef>
#include <string_view>

namespace bench
{

double twice(double number);

double sumOfEight(double a, double b, double c, double d, double e, double f, double g, double h);

/// Returns `text` without the blanks around it.
std::string_view trimmed(std::string_view text);

/// The host's object behind a user type.
struct Body
{
    static constexpr std::size_t SIZE = 4;

    double value = 0.0;
    double mass = 1.0;
    std::array<double, SIZE> elements{};
};

double massOf(const Body& body);
Body sumOf(const Body& left, const Body& right);
bool isLess(const Body& left, const Body& right);

/// The element that scripts call `index`, counted from 1; the first one for an index that is none.
double& elementOf(Body& body, int index);

} // namespace bench
