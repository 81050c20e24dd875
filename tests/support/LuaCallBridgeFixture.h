#pragma once

#include "core/lua/calls/LuaCallbackScope.h"
#include "support/LuaStateFixture.h"

#include "tbScripts/FunctionParameter.h"

#include <memory>
#include <string>

namespace tbScripts::test
{

/// A bare state with a callback under way: values can be read as those of a host function.
class LuaCallBridgeFixture : public LuaStateFixture
{
protected:
    LuaCallBridgeFixture();
    ~LuaCallBridgeFixture() override;

    /// Ends the callback, then looks at the stack and the log.
    void TearDown() override;

    lua::LuaCallbackScope& scope() const;

    /// Reads the value of `expression`; it has to fit. Expects the stack to stay as it is.
    void read(FunctionParameter& parameter, const std::string& expression);

    /// Reads the value of `expression`, which must not fit, and returns the message.
    std::string readExpectingError(FunctionParameter& parameter, const std::string& expression);

    /// Expects reading the value of `expression` to fail with this, behind the line.
    void expectMismatch(
        FunctionParameter& parameter,
        const std::string& expression,
        const std::string& message,
        int line = __builtin_LINE());

    /// Reads the value in slot `stackIndex`, which must not fit, and returns the message.
    std::string readSlotExpectingError(FunctionParameter& parameter, int stackIndex);

    /// Returns whether the value of `expression` fits.
    bool accepts(const FunctionParameter& parameter, const std::string& expression);

    /// Declares the user type `typeName` and makes global `name` an instance of it.
    void setInstance(const char* name, const char* typeName, void* object);

private:
    std::unique_ptr<lua::LuaCallbackScope> m_scope;
};

} // namespace tbScripts::test
