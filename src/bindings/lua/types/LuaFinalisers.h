#pragma once

namespace tbScripts::lua
{

class LuaHostCall;

/// Puts the finalisers of all existing types back that scripts have removed or replaced, before the
/// host collects garbage or closes the state: what scripts stored must not run on its behalf. Does
/// nothing in a refused call.
///
/// Why: docs/decisions/0027-finalisers-are-put-back.md
void restoreFinalisers(LuaHostCall& call);

} // namespace tbScripts::lua
