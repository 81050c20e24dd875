#pragma once

#include "core/lua/LuaApi.h"
#include "support/EnvironmentFixture.h"

namespace tbScripts::test
{

/// An environment whose interpreter can be looked at.
class EnvironmentStateFixture : public EnvironmentFixture
{
protected:
    EnvironmentStateFixture();

    /// Valid until: the environment is switched or destroyed.
    lua_State* state() const;

    /// Returns the number of values on the interpreter's stack.
    int stackHeight() const;

    /// Returns the number of values that the registry holds by number.
    int countRegistrySlots() const;

private:
    lua_State* m_state;
};

} // namespace tbScripts::test
