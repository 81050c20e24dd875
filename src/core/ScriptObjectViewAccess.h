#pragma once

#include "core/SharedViewRoom.h"

#include "tbScripts/ScriptObjectView.h"

namespace tbScripts
{

/// Creates views of what the library shares.
struct ScriptObjectViewAccess
{
    static ScriptObjectView make(const SharedView& view)
    {
        ScriptObjectView made;
        sharedViewIn(made.m_room) = view;
        return made;
    }
};

} // namespace tbScripts
