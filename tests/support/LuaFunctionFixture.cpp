#include "support/LuaFunctionFixture.h"

#include "core/lua/calls/LuaHostCall.h"
#include "core/lua/references/LuaScriptObjectInterpreterReference.h"
#include "environments/lua/LuaScriptCalls.h"

#include <utility>

namespace tbScripts::test
{

LuaFunctionFixture::LuaFunctionFixture() = default;

LuaFunctionFixture::~LuaFunctionFixture() = default;

lua::LuaFunction& LuaFunctionFixture::declare(const std::string& name, Function::Callable callable)
{
    m_functions.push_back(std::make_unique<lua::LuaFunction>(name, handle()));
    EXPECT_TRUE(m_functions.back()->isInstalled());
    m_functions.back()->setFunction(std::move(callable));
    return *m_functions.back();
}

void LuaFunctionFixture::destroyLastFunction()
{
    const std::unique_ptr<lua::LuaFunction> going = std::move(m_functions.back());
    m_functions.pop_back();
}

lua::LuaInstanceBox& LuaFunctionFixture::setInstance(
    const std::string& name, const std::string& typeName, void* object, bool gcEnabled)
{
    declareUserType(typeName);
    lua::pushInstance(slot(), state(), object, gcEnabled, typeName);
    EXPECT_NE(lua::instanceAt(slot(), state(), -1).box, nullptr);
    auto* const box = static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
    lua_setglobal(state(), name.c_str());
    return *box;
}

void LuaFunctionFixture::run(const std::string& sources)
{
    ASSERT_EQ(luaL_loadstring(state(), sources.c_str()), 0) << lua_tostring(state(), -1);
    const int status = lua_pcall(state(), 0, 0, 0);
    EXPECT_EQ(status, 0) << lua_tostring(state(), -1);
    lua_settop(state(), 0);
}

std::string LuaFunctionFixture::runExpectingError(const std::string& sources)
{
    EXPECT_EQ(luaL_loadstring(state(), sources.c_str()), 0);
    EXPECT_EQ(lua_pcall(state(), 0, 0, 0), LUA_ERRRUN);
    const char* const text = lua_tostring(state(), -1);
    std::string message = text ? text : "";
    lua_settop(state(), 0);
    return message;
}

void LuaFunctionFixture::raises(const std::string& sources, const std::string& message, int line)
{
    EXPECT_EQ(runExpectingError(sources), message) << sources << ", in line " << line;
}

void LuaFunctionFixture::is(const std::string& expression, const std::string& shown, int line)
{
    run("shown = tostring((" + expression + "))");
    EXPECT_EQ(global("shown"), shown) << expression << ", in line " << line;
}

void LuaFunctionFixture::callScript(
    const ScriptObjectReference& function,
    const std::vector<FunctionParameter>& inputs,
    Parameters outputs)
{
    const lua::LuaScriptCalls calls(handle());
    lua::LuaHostCall call(handle());
    std::size_t mismatch = 0;
    const lua::LuaCallOutcome outcome =
        calls.callFunction(call, function, inputs, outputs, mismatch);
    EXPECT_EQ(outcome.errorText, "");
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(mismatch, outputs.size());
}

std::string LuaFunctionFixture::global(const std::string& name)
{
    lua_getglobal(state(), "tostring");
    lua_getglobal(state(), name.c_str());
    lua_call(state(), 1, 1);
    std::string text = lua_tostring(state(), -1);
    lua_pop(state(), 1);
    return text;
}

bool LuaFunctionFixture::isGlobal(const ScriptObjectReference& reference, const std::string& name)
{
    lua_getglobal(state(), name.c_str());
    lua::pushReferenced(state(), reference, handle());
    const bool isSame = lua_rawequal(state(), -1, -2) != 0;
    lua_pop(state(), 2);
    return isSame;
}

} // namespace tbScripts::test
