#pragma once

#include <tbMemory/StringView.h>

namespace tbScripts::lua
{

/// Returns whether `chunk` is compiled code of the interpreter.
bool isDump(const tbMemory::StringView& chunk);

/// Returns whether the compiled code in `chunk` is there to its end, as far as its parts say how
/// long they are. What is in them is trusted.
///
/// LuaJIT 2.1.0-beta3 reads on behind code that was cut off between two functions, or in the length
/// of one, and takes what it finds there for code (ScriptValueDamageTest).
bool isWholeDump(const tbMemory::StringView& chunk);

} // namespace tbScripts::lua
