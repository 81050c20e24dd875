#pragma once

#include "support/EnvironmentFixture.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>

namespace tbScripts::test
{

/// What scripts and host objects write when they end. Laid out as the fixture's scripts declare it.
struct TeardownTrace
{
    std::int32_t size;
    std::array<char, 124> letters;

    void add(char letter);

    std::string text() const;
};

/// A Lua environment whose end can be watched, up to the finalisers that run while its interpreter
/// closes.
///
/// Scripts find `note(byte)`, which writes a letter, and `onEnd(letter, action)`, which returns a
/// value whose finaliser writes the letter and then calls `action`, if there is one. Both use
/// upvalues only, so that they work where no global is left.
class TeardownFixture : public EnvironmentFixture
{
protected:
    TeardownFixture();

    /// Declares a function whose callable does `action` when it is destroyed.
    void declareWithEnd(const std::string& name, std::function<void()> action);

    /// Declares the function `quit`, which destroys the environment and then does `action`.
    void declareQuit(std::function<void()> action = [] {});

    TeardownTrace m_trace{};
};

} // namespace tbScripts::test
