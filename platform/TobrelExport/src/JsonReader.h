#pragma once

#include <tbMemory/StringView.h>

#include <boost/json/value.hpp>

#include <cstddef>
#include <string>

namespace tbExport::json
{

/// Result of reading a text.
struct ReadDocument
{
    boost::json::value root;
    std::string error;      // empty if the text is a document
    std::size_t offset = 0; // where reading stopped
};

/// Reads a text that is one JSON document.
ReadDocument readDocument(tbMemory::StringView text);

} // namespace tbExport::json
