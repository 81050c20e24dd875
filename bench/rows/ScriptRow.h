#pragma once

#include "Row.h"
#include "support/LibraryHost.h"
#include "support/LuaHost.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench
{

using RowList = std::vector<Row>;

/// Operations in one timed run where one of them takes nanoseconds.
constexpr std::size_t MANY = 200'000;
constexpr std::size_t MANY_IN_SMOKE = 200;

/// What `makeScriptRow` makes a row of.
struct ScriptRow
{
    std::string subject;
    std::string name;
    double goal;

    /// Defines `run(n)`, which does the operation `n` times and returns a number. Both sides run
    /// this very text.
    std::string source;

    std::function<void(tbScripts::Environment&)> declareInLibrary;
    std::function<void(lua_State*)> declareByHand;
};

/// Makes a row whose operations run inside of one script function.
Row makeScriptRow(ScriptRow script);

/// A way through the library, or around it, that does an operation `n` times in a loop of the host
/// and returns a number.
using LibraryLoop = std::function<double(LibraryHost& host, std::size_t n)>;
using LuaLoop = std::function<double(LuaHost& host, std::size_t n)>;

/// What `makeHostRow` makes a row of. `begin` runs once and gives the loop.
struct HostRow
{
    std::string subject;
    std::string name;
    double goal;
    std::string source; // run once on both sides, before `begin`
    std::function<LibraryLoop(LibraryHost&)> beginInLibrary;
    std::function<LuaLoop(LuaHost&)> beginByHand;
    std::size_t operations = MANY;
};

/// Makes a row whose operations run inside of one loop of the host.
Row makeHostRow(HostRow host);

} // namespace bench
