#pragma once

#include "tbExport/Api.h"
#include "tbExport/Node.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

namespace tbExport
{

/// Result of reading a document: a tree, or two strings that say why there is none.
///
/// Ownership: the result owns the tree and destroys it in its destructor. Moving the result
/// transfers the tree, at the same address. To keep the tree longer, move the root node out of the
/// result.
class TBEXPORT_API ExporterLoadResult
{
public:
    /// Creates an empty result: nothing was read and nothing failed.
    ExporterLoadResult() noexcept;

    /// Creates the result of a document that was read.
    explicit ExporterLoadResult(Node root);

    /// Creates the result of a document that could not be read.
    ExporterLoadResult(tbMemory::String error, tbMemory::String errorContext) noexcept;

    ExporterLoadResult(const ExporterLoadResult&) = delete; // a tree has one owner
    ExporterLoadResult& operator=(const ExporterLoadResult&) = delete;

    /// Leaves `other` empty.
    ExporterLoadResult(ExporterLoadResult&& other) noexcept;
    ExporterLoadResult& operator=(ExporterLoadResult&& other) noexcept;

    ~ExporterLoadResult();

    /// The root of the tree; null if there is none.
    ///
    /// Valid until: the result is assigned to or destroyed. A move of the result keeps it valid.
    Node* getRoot() noexcept;
    const Node* getRoot() const noexcept;

    /// Whether a document could not be read. There is no root then.
    bool hasFailed() const noexcept;

    /// What is wrong and where, such as "line 3, column 14: syntax error"; empty without failure.
    ///
    /// Valid until: the result is assigned to, moved or destroyed.
    tbMemory::StringView getError() const noexcept;

    /// The line around that place; empty without failure.
    ///
    /// Valid until: the same.
    tbMemory::StringView getErrorContext() const noexcept;

private:
    Node* m_root = nullptr; // owned
    bool m_hasFailed = false;
    tbMemory::String m_error;
    tbMemory::String m_errorContext;
};

} // namespace tbExport
