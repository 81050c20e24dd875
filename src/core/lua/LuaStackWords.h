#pragma once

// Arguments and results on the interpreter's stack, without a call of the interpreter for each.
//
// A typed call of a host function does little else than read its arguments and push its result, and
// each of these costs as much as the host's own function if it goes through the interpreter's
// interface. LuaJIT keeps numbers on its stack as they are, and the places of the stack's ends in
// the thread. Whether it does is found out when the first state is opened; if anything differs, and
// for everything that is no plain number or block, the interface is used
// (docs/decisions/0036-words-on-the-stack.md).

#include "core/lua/LuaApi.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tbScripts::lua
{

class LuaStackWords
{
public:
    /// Finds out how this interpreter keeps its stack, once for the process. May raise.
    static void probe(lua_State* state);

    /// Returns whether the stack is read and written in place.
    static bool isKnown() { return s_isKnown.load(std::memory_order_relaxed); }

    /// Chooses the way: the same result has to come of both.
    static void setKnown(bool isKnown) { s_isKnown.store(isKnown, std::memory_order_relaxed); }

    /// Reads the number at `index`, counted from the bottom. Returns false for one that is infinite
    /// or none, and for all other values.
    static bool readNumber(lua_State* state, int index, double& number)
    {
        const char* place = nullptr;
        if (!_find(state, index, place))
            return false;
        const std::uint64_t word = _wordAt(place);
        if ((word & EXPONENT) == EXPONENT) // every value that is no number looks like such a one
            return false;
        std::memcpy(&number, &word, sizeof number);
        return true;
    }

    /// Returns the block of the full userdata at `index`, counted from the bottom, null for all
    /// other values. Requires: `isKnown()`.
    static void* readBlock(lua_State* state, int index)
    {
        const char* place = nullptr;
        return _find(state, index, place) ? _blockOf(_wordAt(place)) : nullptr;
    }

    /// Returns the size of such a block. Requires: `isKnown()`.
    static std::uint32_t readSize(const void* block)
    {
        std::uint32_t size = 0;
        std::memcpy(&size, static_cast<const char*>(block) - SIZE_BELOW_BLOCK, sizeof size);
        return size;
    }

    /// Returns the block of the full userdata that is the first upvalue of the running function,
    /// which has one. Requires: `isKnown()`.
    static void* readFirstUpvalue(lua_State* state)
    {
        const char* const bottom = _pointerAt(_inside(state) + BOTTOM);
        const std::uint64_t function = _wordAt(bottom - FUNCTION_BELOW_BOTTOM) & ADDRESS;
        return _blockOf(_wordAt(_placeOf(function) + UPVALUES));
    }

    /// Pushes `number`, for which a C function always has room. Returns false, and pushes nothing,
    /// for one that is infinite or none.
    static bool pushNumber(lua_State* state, double number)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, &number, sizeof number);
        if (!isKnown() || (word & EXPONENT) == EXPONENT)
            return false;
        char* const end = _pointerAt(_inside(state) + END);
        std::memcpy(end, &word, sizeof word);
        char* const raised = end + sizeof word;
        std::memcpy(_inside(state) + END, &raised, sizeof raised);
        return true;
    }

private:
    friend struct LuaStackProbe;

    static constexpr std::uint64_t EXPONENT = 0x7FF0000000000000U;
    static constexpr std::uint64_t ADDRESS = (std::uint64_t{1} << 47U) - 1;

    // Of a thread.
    static constexpr std::ptrdiff_t BOTTOM = 32;
    static constexpr std::ptrdiff_t END = 40;

    static constexpr std::ptrdiff_t FUNCTION_BELOW_BOTTOM = 16;
    static constexpr std::ptrdiff_t UPVALUES = 48; // of a C function

    static char* _inside(lua_State* state) { return reinterpret_cast<char*>(state); }

    static char* _pointerAt(const char* place)
    {
        char* pointer = nullptr;
        std::memcpy(&pointer, place, sizeof pointer);
        return pointer;
    }

    // NOLINTNEXTLINE(performance-no-int-to-ptr): the interpreter tags its addresses
    static char* _placeOf(std::uint64_t address) { return reinterpret_cast<char*>(address); }

    static std::uint64_t _wordAt(const char* place)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, place, sizeof word);
        return word;
    }

    // Returns whether there is a value at `index`, and where.
    static bool _find(lua_State* state, int index, const char*& place)
    {
        if (!isKnown())
            return false;
        place = _pointerAt(_inside(state) + BOTTOM) +
                static_cast<std::ptrdiff_t>(sizeof(std::uint64_t)) * (index - 1);
        return place < _pointerAt(_inside(state) + END);
    }

    // The address in a word that is a full userdata, else null.
    static void* _blockOf(std::uint64_t word)
    {
        const std::uint64_t address = word ^ s_tagOfUserdata.load(std::memory_order_relaxed);
        return address <= ADDRESS ? _placeOf(address) + HEADER_OF_USERDATA : nullptr;
    }

    static constexpr std::ptrdiff_t HEADER_OF_USERDATA = 48;
    static constexpr std::ptrdiff_t SIZE_BELOW_BLOCK = 24;

    static std::atomic<bool> s_isKnown;
    static std::atomic<std::uint64_t> s_tagOfUserdata;
};

} // namespace tbScripts::lua
