#pragma once

#include "tbScripts/Api.h"
#include "tbScripts/Interpreter.h"

#include <tbMemory/BufferCast.h>
#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

/// Converts interpreters to and from their names, and splits qualified names.
class TBSCRIPTS_API StringUtils
{
public:
    /// Returns "lua" for `INTERPRETER_LUA` and "UNKNOWN" for every other value.
    ///
    /// Valid until: the library is unloaded.
    static tbMemory::StringView interpreterToString(INTERPRETER interpreter);

    /// Returns `INTERPRETER_LUA` for exactly "lua" (case-sensitive), else `INTERPRETER_UNKNOWN`.
    static INTERPRETER stringToInterpreter(const tbMemory::StringView& text);

    /// Splits `name` at each "::" and returns the parts, at least one.
    ///
    /// Empty parts count: "a::" has the parts "a" and "". A single colon never splits. Of three
    /// colons the first two split: "a:::b" has the parts "a" and ":b".
    static tbMemory::BufferCast<tbMemory::String>
    splitUserTypeName(const tbMemory::StringView& name);
};

} // namespace tbScripts
