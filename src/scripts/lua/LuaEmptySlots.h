#pragma once

#include <tbMemory/StringView.h>

#include <string>

namespace tbScripts::lua
{

/// Returns `dump` with the slots that the interpreter left out of the templates of tables, an empty
/// string if `dump` is to stay as it is.
///
/// A constructor such as `{ id = i, kind = 'a' }` copies a template that has room for all of its
/// keys, and stores the values that are no constants. A dump holds the constants alone, so that
/// each table of a dumped chunk grew with its first stores: it took two to three times as long to
/// create. The code that stores still says which slots these are
/// (docs/decisions/0030-empty-slots-of-table-templates.md).
///
/// A slot holds false until its value is stored, which the constructor does before anything can
/// reach the table. Code that is not understood stays as it is, whatever the bytes are.
///
/// Requires: `code` is what the interpreter's own dump wrote, and `isCodeUnderstood`, if the code
/// is going to be loaded.
std::string withEmptySlots(const tbMemory::StringView& dump);

} // namespace tbScripts::lua
