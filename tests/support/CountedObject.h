#pragma once

namespace tbScripts::test
{

/// Counts births and deaths: how many objects live, and how many ever did.
class CountedObject
{
public:
    CountedObject();
    CountedObject(const CountedObject& other);
    CountedObject& operator=(const CountedObject& other);
    ~CountedObject();

    static int getLiving();
    static int getMade();

    /// Starts both counts again. Requires: none lives.
    static void restart();
};

} // namespace tbScripts::test
