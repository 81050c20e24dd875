#pragma once

#include "tbExport/Node.h"

#include <boost/json/value.hpp>

namespace tbExport::json
{

using boost::json::array;
using boost::json::key_value_pair;
using boost::json::object;
using boost::json::value;

// A `Node` is one value of the JSON library and nothing else, so the values inside an array or an
// object are nodes as well and a tree needs no second one around it. All values are made with the
// library's default storage; moving them therefore never allocates.

value& valueOf(Node& node) noexcept;
const value& valueOf(const Node& node) noexcept;

/// The node that a value inside a tree is; null for null.
Node* nodeOf(value* inside) noexcept;
const Node* nodeOf(const value* inside) noexcept;

/// Whether this is an array or an object that holds something.
bool hasChildren(const value& tree) noexcept;

/// Copies a tree of any depth. `to` is null before, and a part of the tree after a throw.
void copyTree(value& to, const value& from);

/// Takes a tree apart until what is left of it is shallow enough for the library's destructor,
/// which recurses. Needs no memory.
void dismantle(value& tree) noexcept;

} // namespace tbExport::json
