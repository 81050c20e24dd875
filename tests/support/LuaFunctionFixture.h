#pragma once

#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/values/LuaInstanceBox.h"
#include "support/Callables.h"
#include "support/LuaStateFixture.h"

#include "tbScripts/ScriptObjectReference.h"

#include <memory>
#include <string>
#include <vector>

namespace tbScripts::test
{

/// A bare state with host functions and with instances of user types, which no environment can make
/// without the types themselves.
class LuaFunctionFixture : public LuaStateFixture
{
protected:
    LuaFunctionFixture();
    ~LuaFunctionFixture() override;

    /// Publishes a host function as a global and returns it. It dies before the state.
    lua::LuaFunction& declare(const std::string& name, Function::Callable callable);

    /// Destroys the function that was declared last.
    void destroyLastFunction();

    /// Declares the user type `typeName` and makes global `name` an instance of it.
    ///
    /// Valid until: the interpreter collects the instance.
    lua::LuaInstanceBox&
    setInstance(const std::string& name, const std::string& typeName, void* object, bool gcEnabled);

    /// Runs a script that has to succeed.
    void run(const std::string& sources);

    /// Runs a script that has to fail, and returns its message.
    std::string runExpectingError(const std::string& sources);

    /// Runs a script that has to fail with `message`.
    void
    raises(const std::string& sources, const std::string& message, int line = __builtin_LINE());

    /// Expects the value of `expression` to show as `shown`. Sets global "shown".
    void is(const std::string& expression, const std::string& shown, int line = __builtin_LINE());

    /// Calls a script function as a host does; it has to succeed.
    void callScript(
        const ScriptObjectReference& function,
        const std::vector<FunctionParameter>& inputs = {},
        Parameters outputs = {});

    /// Returns global `name` as `tostring` shows it.
    std::string global(const std::string& name);

    /// Returns whether `reference` designates the very value of global `name`.
    bool isGlobal(const ScriptObjectReference& reference, const std::string& name);

private:
    std::vector<std::unique_ptr<lua::LuaFunction>> m_functions;
};

} // namespace tbScripts::test
