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

/// The ratios to hand-written code that no row is to exceed, for rows without stricter ones.
namespace goals
{
constexpr double DESCRIBED = 1.5;
constexpr double TYPED = 1.3;
constexpr double LEAF = 0.6;
} // namespace goals

/// What `makeScriptRow` makes a row of.
struct ScriptRow
{
    std::string subject;
    std::string name;
    double goal; // of the described way

    /// Defines `run(n)`, which does the operation `n` times and returns a number. Both sides run
    /// this very text.
    std::string source;

    std::function<void(tbScripts::Environment&)> declareInLibrary;
    std::function<void(lua_State*)> declareByHand;

    // Empty where the library does not offer the way.
    std::function<void(tbScripts::Environment&)> declareTyped = {};
    std::function<void(tbScripts::Environment&)> declareLeaf = {};
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
    double goal;        // of the described way
    std::string source; // run once on both sides, before `begin`
    std::function<LibraryLoop(LibraryHost&)> beginInLibrary;
    std::function<LuaLoop(LuaHost&)> beginByHand;
    std::size_t operations = MANY;

    // Empty where the library does not offer the way.
    std::function<LibraryLoop(LibraryHost&)> beginTyped = {};
    std::function<LibraryLoop(LibraryHost&)> beginLeaf = {};
    double goalOfTyped = goals::TYPED;
};

/// Makes a row whose operations run inside of one loop of the host.
Row makeHostRow(HostRow host);

} // namespace bench
