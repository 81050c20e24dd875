// Functions of the interpreter that call back, which the library guards against the end of the
// stack.

#include "rows/Rows.h"
#include "rows/ScriptRow.h"

#include <string>

namespace bench
{

namespace
{

Row makeCallingBackRow(const char* name, const char* prepare, const char* operation)
{
    return makeScriptRow(
        {"Functions that call back",
         name,
         1.05,
         std::string(prepare) + " function run(n) for i = 1, n do " + operation +
             " end return n end",
         [](tbScripts::Environment&) {},
         [](lua_State*) {}});
}

} // namespace

void addCallingBackRows(RowList& rows)
{
    rows.push_back(makeCallingBackRow(
        "gsub with a function",
        "local function same(s) return s end",
        "local s = ('a b'):gsub('%w', same)"));
    rows.push_back(makeCallingBackRow(
        "sort of three values with a comparator",
        "local t = {} local function less(a, b) return a < b end",
        "t[1], t[2], t[3] = 3, 1, 2 table.sort(t, less)"));
    rows.push_back(makeCallingBackRow("load of a string", "", "local f = load('return 1')"));
    rows.push_back(makeCallingBackRow("format", "local s", "s = string.format('%d %s', i, 'x')"));
    rows.push_back(makeCallingBackRow(
        "resume and yield",
        "local co = coroutine.create(function() while true do coroutine.yield() end end)",
        "coroutine.resume(co)"));
    rows.push_back(makeCallingBackRow(
        "a coroutine from creation to end", "local function once() end", "coroutine.wrap(once)()"));
}

} // namespace bench
