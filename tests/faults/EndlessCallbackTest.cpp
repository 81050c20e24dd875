// Functions of the interpreter that call back from C take room on the C stack. Endless recursion
// through each of them is an error of the script, on a large stack and on small ones.

#include "support/EnvironmentFixture.h"
#include "support/Facts.h"
#include "support/SmallStackThread.h"
#include "support/Steps.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace tbScripts::test
{

using ::testing::HasSubstr;

class EndlessCallbackTest : public EnvironmentFixture
{
public:
    // Runs a script on stacks of so many KiB. It has to fail for want of stack, of either kind, and
    // so has the same under `pcall`; the environment works afterwards.
    void overflows(const std::vector<std::size_t>& stacks, const std::string& sources)
    {
        for (const std::size_t kibibytes : stacks)
        {
            SCOPED_TRACE(kibibytes);
            runOnStackOf(kibibytes << 10, [&] { _overflow(sources); });
        }
    }

private:
    void _overflow(const std::string& sources)
    {
        restart();
        EXPECT_THAT(runExpectingError(sources), HasSubstr("stack overflow"));
        run("caught, message = pcall(function() " + sources + " end)");
        is("caught", "false");
        EXPECT_THAT(evaluate("message"), HasSubstr("stack overflow"));
        is("('a'):gsub('a', function() return 'b' end)", "b");
        is("coroutine.wrap(function() return 'alive' end)()", "alive");
    }
};

namespace
{

using Overflow = std::function<void(EndlessCallbackTest&)>;

// The first line of a script is part of each message, and messages grow where errors pass through
// coroutines.
const std::string unnamed = "\n";

Overflow overflows(const std::string& sources)
{
    return [=](EndlessCallbackTest& test) { test.overflows({8192, 1024, 256}, unnamed + sources); };
}

// Finalisers that a failed collection has not run may fail in the next one.
void collectTheRest(EndlessCallbackTest& test)
{
    test.destroyEnvironment();
    test.forgetLog();
}

// They take less of this stack than of the interpreter's own, so that only a tiny one ends first.
Overflow overflowsOnTinyStacks(const std::string& sources)
{
    return [=](EndlessCallbackTest& test) { test.overflows({256, 128}, unnamed + sources); };
}

// On a large stack the interpreter's own ends first.
Overflow overflowsOnSmallStacks(const std::string& sources)
{
    return [=](EndlessCallbackTest& test) { test.overflows({1024, 256}, unnamed + sources); };
}

// clang-format off
const Facts<EndlessCallbackTest> callbackFacts("EndlessCallbackTest", {
    {"GsubWithAFunction",
        {overflows("local function f() return (('a'):gsub('a', f)) end f()")}},
    {"GsubWithAnIndexMetamethod",
        {overflows("local mt = {} local t = setmetatable({}, mt) "
                   "mt.__index = function() return (('a'):gsub('a', t)) end t.x = t.y")}},
    {"SortWithAComparator",
        {overflowsOnSmallStacks("local function f() table.sort({2, 1, 3}, function(a, b) f() return a < b end) "
                   "end f()")}},
    {"SortWithAMetamethod",
        {overflowsOnSmallStacks("local mt = {} local function n() return setmetatable({}, mt) end "
                   "mt.__lt = function() table.sort({n(), n()}) end table.sort({n(), n()})")}},
    {"LoadWithAReader",
        {overflowsOnSmallStacks("local function f() assert(load(f)) end f()")}},
    {"LoadstringWithAReader",
        {overflowsOnSmallStacks("local function f() assert(loadstring(f)) end f()")}},
    {"DofileOfItself",
        {overflowsOnTinyStacks("FILE = FILE or os.tmpname() local file = io.open(FILE, 'w') "
                   "file:write('dofile(FILE) x = 1') file:close() "
                   "local _, m = pcall(dofile, FILE) os.remove(FILE) error(m, 0)")}},
    {"PrintWithAMetamethod",
        {overflowsOnSmallStacks("local mt = {} local t = setmetatable({}, mt) "
                   "mt.__tostring = function() print(t) return '' end print(t)")}},
    {"PrintWithATostringOfTheScript",
        {overflowsOnSmallStacks("local old = tostring function tostring(v) print(v) return '' end "
                   "local _, m = pcall(print, 1) tostring = old error(m, 0)")}},
    {"FormatWithAMetamethod",
        {overflowsOnSmallStacks("local mt = {} local t = setmetatable({}, mt) "
                   "mt.__tostring = function() return string.format('%s', t) end "
                   "local s = string.format('%s', t)")}},
    {"RequireWithALoader",
        {overflowsOnTinyStacks("table.insert(package.loaders, 1, function(n) require(n .. 'x') end) "
                   "local _, m = pcall(require, 'a') table.remove(package.loaders, 1) error(m, 0)")}},
    {"RequireWithAMetamethod",
        {overflowsOnTinyStacks("setmetatable(package.loaded, {__index = function(t, k) require(k .. 'x') end}) "
                   "local _, m = pcall(require, 'a') setmetatable(package.loaded, nil) error(m, 0)")}},
    {"ModuleWithAMetamethod",
        {overflowsOnSmallStacks("setmetatable(package.loaded, {__index = function(t, k) module(k .. 'x') end}) "
                   "local _, m = pcall(module, 'a') setmetatable(package.loaded, nil) error(m, 0)")}},
    {"OsTimeWithAMetamethod",
        {overflowsOnSmallStacks("local mt = {} local t = setmetatable({}, mt) "
                   "mt.__index = function() return os.time(t) end local n = os.time(t)")}},
    {"CoroutinesThatResumeOthers",
        {overflows("local function f() local ok, m = coroutine.resume(coroutine.create(f)) "
                   "error(m, 0) end f()")}},
    {"CoroutinesThatWrapOthers",
        {overflows("local function f() coroutine.wrap(f)() end f()")}},
    {"IteratorsInIterators",
        {[](EndlessCallbackTest& test)
         { test.overflows({256}, unnamed + "local function f() for _ in coroutine.wrap(f) do end end f()"); }}},
    {"FinalisersThatCollect",
        {overflowsOnSmallStacks("local collect = collectgarbage collect() collect('stop') "
                   "for i = 1, 5000 do getmetatable(newproxy(true)).__gc = function() "
                   "collect() end end collect()"),
         collectTheRest}},
    {"FinalisersThatCollectInSteps",
        {overflowsOnSmallStacks("local collect = collectgarbage collect() collect('stop') "
                   "for i = 1, 5000 do getmetatable(newproxy(true)).__gc = function() "
                   "collect('step', 100000) end end collect()"),
         collectTheRest}},
    {"StringBufferWithAMetamethod",
        {overflowsOnSmallStacks("local b = require('string.buffer').new() local mt = {} "
                   "local t = setmetatable({}, mt) "
                   "mt.__tostring = function() b:put(t) return '' end b:put(t)")}},
    {"FormattedStringBufferWithAMetamethod",
        {overflowsOnSmallStacks("local b = require('string.buffer').new() local mt = {} "
                   "local t = setmetatable({}, mt) "
                   "mt.__tostring = function() b:putf('%s', t) return '' end b:putf('%s', t)")}},
    {"DifferentFunctionsInTurn",
        {overflows("local function f() table.sort({2, 1}, function() "
                   "local s = ('a'):gsub('a', function() coroutine.wrap(f)() end) end) end f()")}},
    {"SourceThatIsNestedDeepAtTheEndOfTheStack",
        {overflows("local source = ('return function() '):rep(190) .. (' end'):rep(190) "
                   "local function f() local s = ('a'):gsub('a', f) end "
                   "local function g() local ok, m = pcall(string.gsub, 'a', 'a', g) "
                   "local deep, n = load(source) error(m or n, 0) end g()")}},
    {"TemplateThatExpandsItself",
        {overflows("local function expand(s) return (s:gsub('%$(%w+)', function(name) "
                   "return expand('$' .. name) end)) end "
                   "local ok, m = pcall(expand, '$a') error(m, 0)")}},
});
// clang-format on

} // namespace

/// What scripts see of the guarded functions is what the interpreter's own show.
class GuardedFunctionTest : public EnvironmentFixture
{
};

namespace
{

std::function<void(GuardedFunctionTest&)>
endsWith(const std::string& code, const std::string& message)
{
    return [=](GuardedFunctionTest& test)
    { EXPECT_THAT(test.errorOf(code), ::testing::EndsWith("]:1: " + message)); };
}

// clang-format off
const Facts<GuardedFunctionTest> guardedFacts("GuardedFunctionTest", {
    {"TemplateMayNestFourHundredDeep",
        {run("local function expand(s, n) return (s:gsub('a', function() "
             "return n > 0 and 'b' .. expand('a', n - 1) or 'c' end)) end "
             "text = expand('a', 400)"),
         is("#text", "401")}},
    {"WrongArgumentsAreReportedByNumberAndName",
        {endsWith("string.gsub()", "bad argument #1 to 'gsub' (string expected, got no value)"),
         endsWith("('x'):gsub('x')", "bad argument #2 to 'gsub' (string/function/table expected)"),
         endsWith("table.sort(1)", "bad argument #1 to 'sort' (table expected, got number)"),
         endsWith("coroutine.wrap(1)", "bad argument #1 to 'wrap' (function expected, got number)"),
         endsWith("coroutine.create()", "bad argument #1 to 'create' (function expected, got no value)"),
         endsWith("string.format('%d', 'x')", "bad argument #2 to 'format' (number expected, got string)"),
         endsWith("collectgarbage('x')", "bad argument #1 to 'collectgarbage' (invalid option 'x')")}},
    {"TracebackNamesThem",
        {run("('a'):gsub('a', function() trace = debug.traceback() end)"),
         is("trace:find([[%[C%]: in function 'gsub']]) ~= nil", "true")}},
    {"CoroutinesYieldAcrossResumeAndWrap",
        {run("local co = coroutine.create(function(a) local b = coroutine.yield(a + 1) "
             "return b * 2 end) local _, x = coroutine.resume(co, 1) "
             "local _, y = coroutine.resume(co, 10) "
             "local w = coroutine.wrap(function(a) return coroutine.yield(a) end) "
             "values = x .. ' ' .. y .. ' ' .. w(3) .. ' ' .. w(4)"),
         is("values", "2 20 3 4")}},
    {"AreTheSameObjectsEverywhere",
        {is("('').gsub == string.gsub and package.loaded.string.gsub == string.gsub", "true"),
         is("debug.getinfo(string.gsub, 'S').what", "C")}},
    {"FormatIsCompiled",
        {run("local util = require 'jit.util' jit.flush() jit.opt.start('hotloop=10') "
             "local s for i = 1, 1000 do s = string.format('%d %s', i, 'x') end "
             "links = '' for i = 1, 20 do local t = util.traceinfo(i) "
             "if t then links = links .. t.linktype .. ' ' end end"),
         is("links:find('loop') ~= nil and links:find('stitch') == nil", "true")}},
    {"ChainOfTwoThousandCoroutinesWorks",
        {run("local function f(n) if n == 0 then return 'end' end "
             "return coroutine.wrap(f)(n - 1) end result = f(2000)"),
         is("result", "end")}},
});
// clang-format on

} // namespace

} // namespace tbScripts::test
