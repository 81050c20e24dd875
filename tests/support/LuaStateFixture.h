#pragma once

#include "core/lua/LuaApi.h"
#include "core/lua/LuaStateHandle.h"
#include "core/lua/calls/LuaCallbackScope.h"
#include "support/LogFixture.h"

#include <string>

namespace tbScripts::test
{

/// A state of its own, outside of any environment. Its stack has to be empty at the end.
class LuaStateFixture : public LogFixture
{
protected:
    LuaStateFixture();
    ~LuaStateFixture() override;

    void TearDown() override;

    lua_State* state() const;
    const lua::LuaStateHandle& handle() const;
    lua::LuaStateSlot& slot() const;

    /// Closes the state before the test ends.
    void closeState();

    /// Closes the state and opens another one.
    void reopenState();

    /// Runs `code` and leaves its one result on the stack.
    void push(const std::string& code);

    /// Publishes a metatable for boxes of the user type `fullName`, as declaring the type does.
    void declareUserType(const std::string& fullName);

    /// Returns the number of values that the registry holds by number.
    int countRegistrySlots() const;

private:
    lua::LuaStateHandle m_handle;
};

} // namespace tbScripts::test
