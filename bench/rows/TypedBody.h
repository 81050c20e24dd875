#pragma once

#include <tbScripts/Environment.h>

namespace bench
{

// Each binds the global type `Body` by what the compiler knows of it.

/// With what `declareHandWrittenBody` gives it, and nothing that compiled scripts reach by
/// themselves.
void bindTypedBody(tbScripts::Environment& environment);

/// The same with leaves, wherever there can be some.
void bindBodyOfLeaves(tbScripts::Environment& environment);

/// With nothing but the method `get`.
void bindTypedMethodOnly(tbScripts::Environment& environment);
void bindMethodOnlyOfLeaves(tbScripts::Environment& environment);

} // namespace bench
