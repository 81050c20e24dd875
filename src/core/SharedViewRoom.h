#pragma once

#include "tbScripts/ScriptObjectInterpreterView.h"

#include <cstddef>
#include <memory>
#include <new>

namespace tbScripts
{

// Why: docs/decisions/0033-callables-of-our-own.md

/// The shared pointer to a view that a public class stores in bytes of its own, so that hosts need
/// not compile `<memory>`.
using SharedView = std::shared_ptr<ScriptObjectInterpreterView>;

static_assert(sizeof(SharedView) == 2 * sizeof(void*) && alignof(SharedView) == alignof(void*));

/// Returns the pointer in `room`. Requires: there is one.
inline SharedView& sharedViewIn(unsigned char (&room)[sizeof(SharedView)])
{
    return *std::launder(reinterpret_cast<SharedView*>(room));
}

inline const SharedView& sharedViewIn(const unsigned char (&room)[sizeof(SharedView)])
{
    return *std::launder(reinterpret_cast<const SharedView*>(room));
}

} // namespace tbScripts
