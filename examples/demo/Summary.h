#pragma once

namespace demo
{

/// The table at the end, in which each line compares the counts of two sides.
class Summary
{
public:
    /// Prints a heading; `first` and `second` name the sides.
    static void begin(const char* title, const char* first, const char* second);

    /// Prints one line, with `decimals` places, and notes whether both sides are the same.
    void compare(const char* what, double first, double second, int decimals = 0);

    /// Prints one line about what should not be there, and notes whether it is.
    void expectNone(const char* what, int count);

    /// Notes differences that were found before.
    void addDifferences(int count) { m_differences += count; }

    /// Prints whether all agreed, and returns it.
    bool finish() const;

private:
    int m_differences = 0;
};

} // namespace demo
