#include "bindings/lua/typed/LuaTypedRun.h"

#include "bindings/CallDefinition.h"
#include "bindings/lua/LuaRaise.h"
#include "bindings/lua/functions/LuaFunction.h"
#include "bindings/lua/typed/LuaTypedCall.h"
#include "bindings/lua/typed/LuaTypedReading.h"
#include "bindings/lua/values/LuaCallBridge.h"
#include "core/LogSources.h"
#include "core/lua/LuaNumber.h"

#include "tbScripts/LogManager.h"

#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

namespace tbScripts::lua
{

namespace
{

using typed::KIND;

// The instance comes behind the arguments on the stack: those that are missing are nil from here
// on.
void completeArguments(LuaTypedCall& call)
{
    const int count = call.signature->count;
    call.constructorArguments = lua_gettop(call.state);
    if (call.constructorArguments >= count)
        return;
    typedReading::check(call);
    lua_settop(call.state, count);
}

// Not inline: calls hardly ever fail.
[[gnu::noinline, gnu::cold]] int
raiseThrown(lua_State* state, const std::string& errorText, bool isLogged)
{
    if (isLogged)
        LogManager::getInstance()->log(errorText, LOG_SOURCE_LUA_FUNCTION);
    return raiseText(state, errorText.c_str());
}

// A leaf keeps its promise on the ordinary way too, or hosts would only find out in compiled code.
class LeafPromise
{
public:
    explicit LeafPromise(const LuaTypedCall& call)
        : m_guard(call.signature->leaf ? &call.getSlot().getLeafGuard() : nullptr)
    {
        if (m_guard)
            m_guard->running = 1;
    }

    LeafPromise(const LeafPromise&) = delete;
    LeafPromise& operator=(const LeafPromise&) = delete;

    ~LeafPromise()
    {
        if (m_guard)
            m_guard->running = 0;
    }

private:
    typed::LeafGuard* m_guard;
};

// Returns the number of results, or RAISE_MESSAGE_ON_TOP. What the host has thrown is raised
// outside of the handler, where the log receiver may call the library.
int runCatching(LuaTypedCall& call, void* context, bool isLogged)
{
    std::unique_ptr<std::string> errorText;
    try
    {
        if (call.constructed)
            completeArguments(call);
        const LeafPromise promise(call);
        return call.signature->run(call, context);
    }
    catch (const std::string& thrown)
    {
        errorText = std::make_unique<std::string>(thrown);
    }
    catch (const std::exception& exception)
    {
        errorText = std::make_unique<std::string>(exception.what());
    }
    return raiseThrown(call.state, *errorText, isLogged);
}

template <typename T>
T valueOf(const void* object, const typed::Member& member)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + member.offset, sizeof value);
    return value;
}

template <typename T>
void store(void* object, const typed::Member& member, T value)
{
    std::memcpy(static_cast<char*>(object) + member.offset, &value, sizeof value);
}

// A value that is no number reads as 0.
double numberAt(lua_State* state, int index, const char* expected, const tbMemory::StringView& name)
{
    const double number = lua_tonumber(state, index);
    if (number != 0.0 || lua_isnumber(state, index))
        return number;
    lua_Debug activation;
    throw std::string(std::string_view(LuaCallBridge::buildTypeMismatchMessage(
        state, activation, lua_type(state, index), expected, name)));
}

} // namespace

int runTypedFunction(const LuaFunction& function, lua_State* state)
{
    FunctionDefinition& definition = function.getDefinition();
    const TypedHold<FunctionDefinition> hold(definition);
    LuaCallbackScope scope(*function.getHandle().getSlot(), state);
    const TypedCallable& callable = *definition.typed;
    LuaTypedCall call(scope, callable.getSignature(), &definition.getName());
    return runCatching(call, callable.getContext(), true);
}

int runTypedAccess(
    LuaStateSlot& slot,
    lua_State* state,
    const TypedCallable& callable,
    const tbMemory::String& name)
{
    LuaCallbackScope scope(slot, state);
    LuaTypedCall call(scope, callable.getSignature(), &name);
    return runCatching(call, callable.getContext(), false);
}

int runTypedConstructor(
    lua_State* state, const LuaTypeCore& core, const TypedCallable& callable, int tableIndex)
{
    LuaCallbackScope scope(*core.handle.getSlot(), state);
    LuaTypedCall call(scope, callable.getSignature(), &core.fullName);
    call.constructed = &core;
    call.constructedTable = tableIndex;
    return runCatching(call, callable.getContext(), true);
}

int pushMember(lua_State* state, const void* object, const typed::Member& member)
{
    if (member.kind == KIND::DOUBLE)
        lua_pushnumber(state, valueOf<double>(object, member));
    else if (member.kind == KIND::INT)
        lua_pushinteger(state, valueOf<int>(object, member));
    else if (member.kind == KIND::FLOAT)
        lua_pushnumber(state, static_cast<double>(valueOf<float>(object, member)));
    else
        lua_pushboolean(state, valueOf<bool>(object, member) ? 1 : 0);
    return 1;
}

void writeMember(
    lua_State* state,
    void* object,
    const typed::Member& member,
    int index,
    const tbMemory::StringView& name)
{
    if (member.kind == KIND::DOUBLE)
        store(object, member, numberAt(state, index, "double", name));
    else if (member.kind == KIND::INT)
        store(object, member, truncateToInt(numberAt(state, index, "int", name)));
    else if (member.kind == KIND::FLOAT)
        store(object, member, narrowToFloat(numberAt(state, index, "float", name)));
    else
        store(object, member, lua_toboolean(state, index) != 0);
}

} // namespace tbScripts::lua
