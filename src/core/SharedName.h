#pragma once

#include "core/Counted.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{

/// A name that several objects hold, so that a host with thousands of bindings has it once.
struct SharedName final : HolderCount
{
    explicit SharedName(const tbMemory::StringView& name)
        : text(name)
    {
    }

    static void destroy(SharedName* name) noexcept { delete name; }

    tbMemory::String text;
};

} // namespace tbScripts
