#pragma once

#include <boost/json/value.hpp>

#include <string>

namespace tbExport::json
{

/// Prints a tree of any depth, without recursion, into one growing text.
std::string printDocument(const boost::json::value& root);

} // namespace tbExport::json
