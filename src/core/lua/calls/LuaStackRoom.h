#pragma once

// How much is left of the stack that the calling function runs on.
//
// The system knows the stack of each thread. A host may run us on another one, a fibre's, which
// nobody has told us about: then the size is a guess, and what is left of it is counted from the
// place at which the outermost call of the host began.
//
// Why: docs/decisions/0029-stacks-of-the-host.md

#include "port/StackBounds.h"

#include <cstdint>

namespace tbScripts::lua
{

class LuaStackRoom
{
public:
    static constexpr std::uintptr_t KIBIBYTE = 1024;

    /// What a call of the host leaves free: the interpreter and the next host function need some.
    static constexpr std::uintptr_t RESERVE_OF_HOST_CALL = 32 * KIBIBYTE;

    /// The size that an unknown stack is taken for, and what is taken to be left of it where the
    /// outermost call of the host begins.
    static constexpr std::uintptr_t SIZE_OF_UNKNOWN = 64 * KIBIBYTE;
    static constexpr std::uintptr_t LEFT_OF_UNKNOWN = 48 * KIBIBYTE;

    /// So far below the outermost call no stack is looked at.
    static constexpr std::uintptr_t SHALLOW = 8 * KIBIBYTE;

    /// Looks at the stack that `place` is on. `findOutermost()` returns where the outermost call of
    /// the host began; only unknown stacks need that.
    template <typename FindOutermost>
    LuaStackRoom(std::uintptr_t place, FindOutermost&& findOutermost)
    {
        if (!_measureKnown(place))
            _guess(findOutermost() - place);
    }

    /// Returns the stack that the system has created for this thread.
    static const port::StackBounds& getStackOfThread();

    std::uintptr_t getSize() const { return m_size; }

    std::uintptr_t getLeft() const { return m_left; }

    /// Returns whether the place is on a stack that nobody knows, and too far from `outermost` for
    /// both to be on the same one.
    bool isAnotherStack() const { return m_isAnotherStack; }

private:
    bool _measureKnown(std::uintptr_t place);
    void _guess(std::uintptr_t used);

    std::uintptr_t m_size = SIZE_OF_UNKNOWN;
    std::uintptr_t m_left = 0;
    bool m_isAnotherStack = false;
};

} // namespace tbScripts::lua
