#include "scripts/lua/LuaScriptStrategy.h"

#include "core/ExceptionContainment.h"
#include "core/LogSources.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaErrorText.h"
#include "core/lua/LuaPrivateState.h"
#include "core/lua/LuaText.h"
#include "scripts/ScriptMessages.h"
#include "scripts/lua/LuaCodeProbe.h"
#include "scripts/lua/LuaEmptySlots.h"

#include "tbScripts/LogManager.h"

#include <atomic>
#include <string>
#include <string_view>

namespace tbScripts::lua
{

namespace
{

// Compiled code is refused: it enters only through our own compiler.
constexpr const char* MODE_TEXT_ONLY = "t";

struct Compilation
{
    std::string sources;                   // up to their first NUL
    std::shared_ptr<LuaBytecode> bytecode; // where the result goes
    int status = 0;                        // of the interpreter's compiler
    std::string message;                   // its message if it failed
};

// Runs protected. Raises only for want of memory; a syntax error is an outcome.
int compile(lua_State* state)
{
    Compilation& compilation = *static_cast<Compilation*>(lua_touserdata(state, 1));
    lua_pushcfunction(state, &luaopen_string);
    lua_pushliteral(state, "string");
    lua_call(state, 1, 0);

    // The sources name the chunk, so that messages begin with their first line.
    compilation.status = luaL_loadbufferx(
        state,
        compilation.sources.data(),
        compilation.sources.size(),
        compilation.sources.c_str(),
        MODE_TEXT_ONLY);
    if (compilation.status != 0)
    {
        compilation.message = errorTextAt(state, -1);
        return 0;
    }

    lua_getglobal(state, "string");
    lua_getfield(state, -1, "dump");
    lua_pushvalue(state, -3);
    lua_call(state, 1, 1);
    const tbMemory::StringView dump = textAt(state, -1);
    compilation.bytecode->code.append(dump.data(), dump.size());
    return 0;
}

void restoreEmptySlots(tbMemory::Buffer& code)
{
    const std::string restored = withEmptySlots(
        tbMemory::StringView(reinterpret_cast<const char*>(code.data()), code.size()));
    if (!restored.empty() && isCodeUnderstood())
        code = tbMemory::Buffer(restored.data(), restored.size());
}

void compileInPrivateState(const tbMemory::StringView& sources, Compilation& compilation)
{
    compilation.sources = std::string_view(upToFirstNul(sources));
    compilation.bytecode = std::make_shared<LuaBytecode>();
    const LuaPrivateState state;
    if (!state.get() || lua_cpcall(state.get(), &compile, &compilation) != 0)
        compilation.status = LUA_ERRMEM;
    else if (compilation.status == 0)
        restoreEmptySlots(compilation.bytecode->code);
}

} // namespace

bool LuaScriptStrategy::load(tbMemory::StringView sources)
{
    m_bytecode.reset();
    m_lastCompilationResult = CompilationResult();

    Compilation compilation;
    // Our own copies can run out of memory as well as the interpreter.
    if (!contain([&] { compileInPrivateState(sources, compilation); }, [] {}))
        compilation.status = LUA_ERRMEM;
    if (compilation.status == LUA_ERRMEM)
        return _fail(COMPILATION_OUT_OF_MEMORY, messages::NOT_ENOUGH_MEMORY);
    if (compilation.status != 0)
        return _fail(COMPILATION_SYNTAX_ERROR, compilation.message);
    compilation.bytecode->script = m_number;
    compilation.bytecode->version = _nextNumber();
    m_bytecode = compilation.bytecode;
    return true;
}

void LuaScriptStrategy::unload()
{
    m_bytecode.reset();
}

std::shared_ptr<const LuaBytecode> LuaScriptStrategy::getBytecode() const
{
    return m_bytecode;
}

std::uint64_t LuaScriptStrategy::_nextNumber()
{
    static std::atomic<std::uint64_t> last{0}; // never reaches its end
    return ++last;
}

bool LuaScriptStrategy::_fail(std::uint32_t errorCode, const tbMemory::StringView& reason)
{
    m_lastCompilationResult.message = messages::compilationFailed(getScriptName(), reason);
    m_lastCompilationResult.errorCode = errorCode;
    m_lastCompilationResult.success = false;
    // A copy: the receiver may load again and so replace the message it is reading.
    const tbMemory::String message = m_lastCompilationResult.message;
    LogManager::getInstance()->log(message, LOG_SOURCE_LUA_SCRIPT);
    return m_lastCompilationResult.success;
}

} // namespace tbScripts::lua
