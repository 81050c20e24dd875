#pragma once

// The script functions around leaves, as source text.
//
// Why: docs/decisions/0034-compiled-leaves.md

#include "tbScripts/typed/Call.h"

#include <string>

namespace tbScripts::lua
{

/// The source text for all leaves of one shape, and what goes with it.
struct LuaLeafSource
{
    std::string key;  // the shape, in a few characters
    std::string type; // of the C function; empty for a member
    std::string text; // of a chunk that returns the function
};

/// Returns the source for functions with such parameters; with an empty key if scripts cannot call
/// them by themselves. `hasWord`: whether the leaf is called only while a word of the host is not
/// null.
LuaLeafSource describeLeaf(const typed::Signature& signature, bool hasWord);

/// The same for a function that reads a member of that kind; with an empty key for kinds that are
/// not members.
LuaLeafSource describeReader(typed::KIND kind, bool hasWord);

LuaLeafSource describeWriter(typed::KIND kind, bool hasWord);

/// What the text calls the values that each leaf has for itself. A name that begins with
/// `OWN_TABLE` and ends with the number of a parameter, from 1, is the word of its type.
constexpr const char* OWN_SLOW = "slow";
constexpr const char* OWN_ENTRY = "entry";
constexpr const char* OWN_WORD = "living";
constexpr const char* OWN_PLACE = "place"; // of a member, counted in members of its size
constexpr const char* OWN_TOP = "top";     // of its uppermost two bytes, counted in such pairs
constexpr const char OWN_TABLE = 'T';

} // namespace tbScripts::lua
