#include "tbScripts/UserType.h"

namespace tbScripts
{

UserType::UserType(const tbMemory::StringView& name)
    : m_name(name)
    , m_fullName(name)
{
}

UserType::UserType(const UserType& other) = default;

UserType& UserType::operator=(const UserType& other) = default;

UserType::~UserType() = default;

} // namespace tbScripts
