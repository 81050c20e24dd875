#include "sequences/ScriptTexts.h"

#include <array>
#include <cstddef>

namespace tbScripts::fuzz
{

namespace
{

// None recurses without end: the interpreter itself does not survive that in compiled code, if a
// finaliser that raises an error is due meanwhile.
//
// The place of a statement is its number: new ones go to the end, and a statement that no longer
// serves is replaced by a comment.
constexpr std::array STATEMENTS{
    "f0()",
    "f1(1, 'x', {}, f0)",
    "pcall(f0, v0, v1, v2)",
    "pcall(f1, nil, -1e300, 'text', v0)",
    "v0 = f0(v1)",
    "v1 = f1(v0, v1)",
    "v0 = T.new()",
    "v1 = U.new()",
    "v2 = n.T.new()",
    "v3 = n.m.T.new()",
    "local ok, made = pcall(T.new) if ok then v1 = made end",
    "v0 = nil collectgarbage()",
    "v1, v2, v3 = nil collectgarbage() collectgarbage()",
    "collectgarbage('step', 10)",
    "v0 = { v1, v2, x = 1, ['y'] = 'text', [3.5] = true, { } }",
    "v1 = { }  v1.self = v1",
    "v2 = function(...) return f0(...) end",
    "v3 = function(a, b) v0 = a return v1, b, 3, 'text', v2 end",
    "v2 = function() error({}) end",
    "v0.x = 3",
    "v1 = v0.x",
    "v0.m = v1",
    "v1 = v0:m(v1)",
    "pcall(function() v2 = T.s(v0, 1) end)",
    "v0[1] = v1",
    "v1 = v0[2]",
    "v1 = v0 + v0",
    "v1 = -v0 .. v1",
    "v3 = v0 == v1 or v0 < v1",
    "v3 = tostring(v0)",
    "pcall(function() getmetatable(v0).__gc(v0) end)",
    "keep = v0 package.loaded.keep = v1",
    "package.loaded.keep = nil keep = nil",
    "n.kept = v0 n.m = v1",
    "for k, v in pairs(n) do f0(k, v) end",
    "print = f0 v0 = n.f0 or n.f1",
    "v0, v1 = v1, v0",
    "v0 = T v1 = n",
    "local p = newproxy(true) getmetatable(p).__gc = function() f0(v0) end",
    "local p = newproxy(true) getmetatable(p).__gc = function() error('gc') end",
    "local p = newproxy(true) getmetatable(p).__gc = function() v0 = T.new() end",
    "v3 = newproxy(true) getmetatable(v3).__gc = f0",
    "coroutine.wrap(function() f0(coroutine.running()) end)()",
    "co = coroutine.create(function(a) while true do a = coroutine.yield(f1(a)) end end)",
    "if co then coroutine.resume(co, v0) end",
    "v2 = coroutine.wrap(f0)",
    "setmetatable(_G, { __index = function(_, k) error('strict ' .. tostring(k)) end })",
    "setmetatable(_G, { __newindex = function(t, k, v) rawset(t, k, v) f0(k, v) end })",
    "setmetatable(_G, { __index = function(t, k) return rawget(t, 'f1') and k end })",
    "setmetatable(_G, nil)",
    "setmetatable(n, { __newindex = function(t, k, v) f0(k) rawset(t, k, v) end })",
    "setmetatable(n, { __index = f0 })",
    "v0 = setmetatable({}, T)",
    "v0 = setmetatable({}, { __index = f0, __newindex = f1, __call = f0, __tostring = f1 })",
    "v0()",
    "for i = 1, 60 do local t = T.new() end",
    "for i = 1, 100 do f1(i) end",
    "local function down(d) if d > 0 then return 1 + down(d - 1) end f0() return 0 end down(50)",
    "local t = { T, n, v0, v1 } for i = 1, #t do v2 = t[i] f1(v2) end",
    "error('raised')",
    "error()",
    "xpcall(f0, f1, v0)",
    "table.sort({ 3, 1, 2 }, function(a, b) f0(a) return a < b end)",
    "string.gsub('abc', '.', f0)",
    "f0 = nil",
    "f1 = f0",
    "T = nil n = nil",
    "_G.n = { T = T }",
    "do return v0, v1 end",
    "v0 = 'a\\0b' v1 = f0(v0, 'x\\0y')",
    "n['a\\0b'] = v0 v2 = { ['k\\0l'] = 'm\\0n' }",
    "_G['v0\\0'] = f1 v1 = ('a'):rep(300, '\\0')",
    "old = old or v2  pcall(f0, old)",
    "if old then n.T.m(old) end",
    "if old then v1 = old.x old.x = 3 end",
    "if old then n.T.__index(old, 'x') end",
    "if old then n.T.__gc(old) end",
    "if old then v1 = old + v2 v3 = v2 + old end",
    "old = nil collectgarbage()",
    "for i = 1, 200 do v0.x = v0.x + i end",
    "for i = 1, 200 do f0(v0, i) end"};

// Their effects on ownership are not followed. Numbered by their places as well.
constexpr std::array LEAKING_STATEMENTS{
    "v0:disableGc()",
    "T.__gc = nil",
    "for k in pairs(T) do T[k] = nil end",
    "T.__gc = f0 T.__index = f1",
    "getmetatable(v0).__index = getmetatable(v0)",
    "T.new = nil T.__newindex = nil"};

} // namespace

std::string anyScriptText(Bytes& bytes, bool& mayLeak)
{
    std::string text;
    for (std::size_t count = 1 + bytes.below(6); count > 0; --count)
    {
        const bool isLeaking = bytes.isRare();
        mayLeak = mayLeak || isLeaking;
        text +=
            isLeaking ? bytes.numbered<16>(LEAKING_STATEMENTS) : bytes.numbered<128>(STATEMENTS);
        text += '\n';
    }
    return text;
}

} // namespace tbScripts::fuzz
