#pragma once

// Compiled code by its parts, which LuaDumpReader.h describes. What is in the functions does not
// matter here.

#include <tbMemory/StringView.h>

#include <cstdint>

namespace tbScripts::lua
{

/// The last function of a dump with the end behind it.
struct LuaDumpTail
{
    tbMemory::StringView bytes; // empty if there is none
    std::uint64_t flags = 0;    // of the dump
};

/// Returns whether `chunk` is compiled code of the interpreter.
bool isDump(const tbMemory::StringView& chunk);

/// Returns whether the compiled code in `chunk` is there to its end, as far as its parts say how
/// long they are. Bytes behind the end do not matter.
///
/// LuaJIT 2.1.0-beta3 reads on behind code that was cut off between two functions, or in the length
/// of one, and takes what it finds there for code (ScriptValueDamageTest).
bool isWholeDump(const tbMemory::StringView& chunk);

/// Returns the tail of `dump`, an empty one unless the dump is whole and nothing is behind it.
LuaDumpTail tailOf(const tbMemory::StringView& dump);

/// Returns `dump` without its end, so that a tail with `flagsOfTail` can be put there: the whole is
/// compiled code again, and if the tail's function creates another, then it creates the chunk of
/// `dump`. Empty if their flags do not go together.
tbMemory::StringView frontForTail(const tbMemory::StringView& dump, std::uint64_t flagsOfTail);

} // namespace tbScripts::lua
