#include "support/LeafFixture.h"

#include "bindings/lua/leaves/LuaLeaves.h"
#include "bindings/lua/values/LuaInstanceBox.h"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace tbScripts::test
{

namespace
{

using typed::KIND;
using typed::LeafGuard;
using typed::Text;

std::string said; // what the last leaf said, which it passes without copying

void say(const std::string& text, Text* out)
{
    said = "leaf " + text;
    *out = {said.data(), said.size()};
}

void sayBool(LeafGuard* /*guard*/, int value, Text* out)
{
    say(std::to_string(value), out);
}

void sayFloat(LeafGuard* /*guard*/, float value, Text* out)
{
    say(std::to_string(value), out);
}

void sayDouble(LeafGuard* /*guard*/, double value, Text* out)
{
    say(std::to_string(value), out);
}

void sayText(LeafGuard* /*guard*/, const char* data, std::size_t size, Text* out)
{
    say(std::to_string(size) + " " + std::string(data, size), out);
}

void sayObject(LeafGuard* /*guard*/, void* object, Text* out)
{
    say(object ? std::to_string(static_cast<LeafFixture::Body*>(object)->number) : "null", out);
}

void (*entryFor(KIND kind))()
{
    if (kind == KIND::BOOL || kind == KIND::INT)
        return entryOf(&sayBool);
    if (kind == KIND::FLOAT)
        return entryOf(&sayFloat);
    if (kind == KIND::DOUBLE)
        return entryOf(&sayDouble);
    return kind == KIND::TEXT ? entryOf(&sayText) : entryOf(&sayObject);
}

int saySlow(lua_State* state)
{
    lua_pushliteral(state, "slow");
    return 1;
}

} // namespace

const typed::TypeId LeafFixture::BODY{0};

LeafFixture::LeafFixture()
{
    declareBody();
}

bool LeafFixture::publishWith(const typed::Parameter& parameter)
{
    return publish("f", &saySlow, entryFor(parameter.kind), {{KIND::TEXT}, parameter});
}

bool LeafFixture::publish(
    const std::string& name,
    lua_CFunction slow,
    void (*entry)(),
    const std::vector<typed::Parameter>& parameters,
    const void* const* living)
{
    typed::Signature signature{};
    signature.parameters = parameters.data();
    signature.count = static_cast<unsigned char>(parameters.size() - 1);
    signature.leaf = &m_leaves.emplace_back(typed::Leaf{entry});
    lua_pushcfunction(state(), slow);
    const bool isLeaf = lua::wrapLeaf(slot(), state(), signature, living);
    lua_setglobal(state(), name.c_str());
    return isLeaf;
}

void LeafFixture::publishMember(const typed::Member& member)
{
    lua_pushcfunction(state(), &saySlow);
    lua::wrapReader(slot(), state(), BODY, member, nullptr);
    lua_setglobal(state(), "read");
    lua_pushcfunction(state(), &saySlow);
    lua::wrapWriter(slot(), state(), BODY, member, nullptr);
    lua_setglobal(state(), "write");
}

void LeafFixture::declareBody()
{
    declareUserType("Body");
    luaL_getmetatable(state(), "Body");
    slot().getLeafTypes().setTable(BODY, lua_topointer(state(), -1));
    lua_setglobal(state(), "Body");
    lua::pushInstance(slot(), state(), &m_body, false, "Body");
    lua_setglobal(state(), "body");
}

std::string LeafFixture::run(const std::string& code)
{
    if (luaL_loadstring(state(), code.c_str()) == 0)
        lua_pcall(state(), 0, 1, 0);
    lua_getglobal(state(), "tostring");
    lua_insert(state(), -2);
    lua_call(state(), 1, 1);
    std::size_t size = 0;
    const char* const text = lua_tolstring(state(), -1, &size);
    std::string result(text, size);
    lua_pop(state(), 1);
    return result;
}

std::string LeafFixture::compiled(const std::string& expression)
{
    return run("local r for i = 1, 300 do r = " + expression + " end return r");
}

std::string LeafFixture::uncompiled(const std::string& expression)
{
    return run(
        "jit.off() jit.flush() local r for i = 1, 300 do r = " + expression + " end return r");
}

lua::LuaInstanceBox& LeafFixture::box(const std::string& global)
{
    lua_getglobal(state(), global.c_str());
    auto* const found = static_cast<lua::LuaInstanceBox*>(lua_touserdata(state(), -1));
    lua_pop(state(), 1);
    return *found;
}

} // namespace tbScripts::test
