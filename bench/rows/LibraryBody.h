#pragma once

#include "support/Workload.h"

#include <tbScripts/Environment.h>
#include <tbScripts/FunctionParameter.h>

namespace bench
{

/// Declares the global type `Body` through the public interface, with what
/// `declareHandWrittenBody` gives it.
void declareLibraryBody(tbScripts::Environment& environment);

/// Returns the object of an argument of that type.
Body& bodyIn(const tbScripts::FunctionParameter& argument);

} // namespace bench
