#include "tbScripts/ScriptObjectInterpreterReference.h"

namespace tbScripts
{

ScriptObjectInterpreterReference::ScriptObjectInterpreterReference(FUNCTION_PARAMETER_TYPE type)
    : m_type(type)
{
}

ScriptObjectInterpreterReference::~ScriptObjectInterpreterReference() = default;

FUNCTION_PARAMETER_TYPE ScriptObjectInterpreterReference::getType() const
{
    return m_type;
}

} // namespace tbScripts
