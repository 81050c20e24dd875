#pragma once

#include "sequences/World.h"

#include <array>

namespace tbScripts::fuzz
{

// Few, so that calls meet: each is used for declarations and by the scripts. The place of a name is
// its number: new ones go to the end.
constexpr std::array<const char*, 4> FUNCTION_NAMES{"f0", "f1", "v0", "print"};
constexpr std::array<const char*, 4> TYPE_NAMES{"T", "U", "n::T", "n::m::T"};
constexpr std::array<const char*, 3> NAMESPACE_NAMES{"n", "n::m", "n::m::k"};
constexpr std::array<const char*, 5> VARIABLE_NAMES{"v0", "v1", "v2", "v3", "T"};
constexpr std::array<const char*, 5> METHOD_NAMES{"x", "m", "s", "__add", "__arrayRead"};
constexpr std::array<const char*, 4> SCRIPT_NAMES{"a", "b", "", "c"};

/// Returns a name of `usual` or, seldom, one of those that are reserved or used for something else.
/// A type and a namespace of one name share their table, and clearing the namespace takes the
/// finaliser with it.
template <typename List>
const char* anyNameOf(World& world, const List& usual)
{
    constexpr std::array<const char*, 6> UNUSUAL{"T", "n", "n::m", "FILE*", "_LOADED", "::"};
    if (!world.bytes().isRare())
        return world.bytes().numbered<8>(usual);
    world.objects().allowLeaks();
    return world.bytes().numbered<16>(UNUSUAL);
}

} // namespace tbScripts::fuzz
