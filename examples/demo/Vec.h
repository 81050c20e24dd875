#pragma once

#include <cmath>

namespace demo
{

/// A place on the field, or a way from one place to another.
struct Vec
{
    double x = 0.0;
    double y = 0.0;
};

inline Vec operator+(const Vec& a, const Vec& b)
{
    return {a.x + b.x, a.y + b.y};
}

inline Vec operator-(const Vec& a, const Vec& b)
{
    return {a.x - b.x, a.y - b.y};
}

inline Vec operator-(const Vec& a)
{
    return {-a.x, -a.y};
}

inline Vec operator*(const Vec& a, double factor)
{
    return {a.x * factor, a.y * factor};
}

inline bool operator==(const Vec& a, const Vec& b)
{
    return a.x == b.x && a.y == b.y;
}

inline double length(const Vec& a)
{
    return std::sqrt(a.x * a.x + a.y * a.y);
}

} // namespace demo
