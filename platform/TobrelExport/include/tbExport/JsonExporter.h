#pragma once

#include "tbExport/Api.h"
#include "tbExport/ExporterLoadResult.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbExport
{

class Exportable;
class Node;

/// Turns JSON documents into trees, and trees into documents.
///
/// What was printed reads back as the same tree: strings and names keep every byte, whether it is
/// UTF-8 or not, members keep their order, numbers their value. Three things are lost: NaN and the
/// infinities are printed as null, and of a tree deeper than 512 levels the document cannot be
/// read.
class TBEXPORT_API JsonExporter
{
public:
    JsonExporter() = delete; // operations only

    /// Reads one document: RFC 8259, and nothing beyond it but bytes in strings that are no UTF-8.
    ///
    /// A byte order mark in front of the text is skipped. Of several members with one name the last
    /// one counts, in the place of the first. Arrays and objects may be 512 levels deep. A number
    /// too large for a double is an error, and so is an exponent of more than 2147483647; a number
    /// too small for a double is zero.
    ///
    /// On failure: a result without root whose first string has line and column, both counted from
    /// 1, such as "line 3, column 14: syntax error". A line ends with a line feed; columns count
    /// characters. The second string is a piece of that line of at most 60 bytes, control
    /// characters shown as blanks, with ">>>" where reading stopped and "..." where it was cut.
    static ExporterLoadResult importIntoTree(tbMemory::StringView text);

    /// Prints a tree of any depth, indented by two blanks for each of the first 32 levels, with a
    /// line feed at the end. Only what JSON requires is escaped.
    ///
    /// On failure: an empty string, if `tree` is null.
    static tbMemory::String exportTreeIntoString(const Node* tree);

    /// Prints what `object` writes into a fresh object node.
    ///
    /// On failure: an empty string, if `object` is null.
    static tbMemory::String exportObjectIntoString(Exportable* object);
};

} // namespace tbExport
