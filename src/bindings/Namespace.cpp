#include "tbScripts/Namespace.h"

namespace tbScripts
{

Namespace::Namespace(const tbMemory::StringView& name)
    : m_name(name)
{
}

Namespace::Namespace(const Namespace& other) = default;

Namespace& Namespace::operator=(const Namespace& other) = default;

Namespace::~Namespace() = default;

void Namespace::setVar(const tbMemory::StringView& name, const char* value)
{
    setVar(name, tbMemory::StringView(value));
}

} // namespace tbScripts
