#include "tbExport/ExporterLoadResult.h"

#include <utility>

namespace tbExport
{

ExporterLoadResult::ExporterLoadResult() noexcept = default;

ExporterLoadResult::ExporterLoadResult(Node root)
    : m_root(new Node(std::move(root)))
{
}

ExporterLoadResult::ExporterLoadResult(
    tbMemory::String error, tbMemory::String errorContext) noexcept
    : m_hasFailed(true)
    , m_error(std::move(error))
    , m_errorContext(std::move(errorContext))
{
}

ExporterLoadResult::ExporterLoadResult(ExporterLoadResult&& other) noexcept
{
    *this = std::move(other);
}

ExporterLoadResult& ExporterLoadResult::operator=(ExporterLoadResult&& other) noexcept
{
    if (this == &other)
        return *this;

    delete std::exchange(m_root, std::exchange(other.m_root, nullptr));
    m_hasFailed = std::exchange(other.m_hasFailed, false);
    m_error = std::exchange(other.m_error, tbMemory::String());
    m_errorContext = std::exchange(other.m_errorContext, tbMemory::String());
    return *this;
}

ExporterLoadResult::~ExporterLoadResult()
{
    delete m_root;
}

Node* ExporterLoadResult::getRoot() noexcept
{
    return m_root;
}

const Node* ExporterLoadResult::getRoot() const noexcept
{
    return m_root;
}

bool ExporterLoadResult::hasFailed() const noexcept
{
    return m_hasFailed;
}

tbMemory::StringView ExporterLoadResult::getError() const noexcept
{
    return m_error;
}

tbMemory::StringView ExporterLoadResult::getErrorContext() const noexcept
{
    return m_errorContext;
}

} // namespace tbExport
