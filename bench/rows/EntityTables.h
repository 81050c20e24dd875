#pragma once

#include "Row.h"

#include <cstddef>
#include <vector>

namespace bench
{

/// What is done with the bytes of a value.
enum class BYTES_WORK
{
    WRITE,
    READ,
    BOTH
};

// Each makes a variant that turns a table of `entities` entities, {id, name, pos = {x, y}, alive},
// into bytes of the host, such bytes into a table, or both. Its result is `entities`. That the
// table comes back as it was is checked here, before anything is timed.

Variant makeLibraryVariant(BYTES_WORK work, std::size_t entities);

/// By the interpreter's own library for that.
Variant makeStringBufferVariant(BYTES_WORK work, std::size_t entities);

/// By lua-cjson, found along the interpreter's module path.
Variant makeCjsonVariant(BYTES_WORK work, std::size_t entities);

} // namespace bench
