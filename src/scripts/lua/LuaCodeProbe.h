#pragma once

namespace tbScripts::lua
{

/// Returns whether `withEmptySlots` understands what this interpreter compiles. Found out once for
/// each process, with a chunk that is compiled, restored and run: the host may load another
/// revision of the interpreter than the one that this library was built with, and instructions have
/// no names (docs/decisions/0030-empty-slots-of-table-templates.md). Throws if there is no memory.
bool isCodeUnderstood();

} // namespace tbScripts::lua
