// Why: docs/decisions/0033-callables-of-our-own.md

#include "tbScripts/Callable.h"

#include <cstring>
#include <functional>
#include <utility>

namespace tbScripts
{

namespace
{

// The room holds an object of another type, so its address is read as bytes.
template <typename Room>
void* addressIn(const Room& room)
{
    void* address = nullptr;
    std::memcpy(&address, &room, sizeof address);
    return address;
}

template <typename Room>
void storeAddress(Room& room, void* address)
{
    std::memcpy(&room, &address, sizeof address);
}

} // namespace

CallableStorage::CallableStorage(Code code) noexcept
    : m_room()
    , m_code(code)
    , m_manager(nullptr)
{
}

CallableStorage::CallableStorage(const CallableStorage& other)
    : m_room(other.m_room)
    , m_code(other.m_code)
    , m_manager(other.m_manager)
{
    if (m_manager)
        storeAddress(m_room, m_manager(addressIn(other.m_room), nullptr));
}

CallableStorage::CallableStorage(CallableStorage&& other) noexcept
    : m_room(other.m_room)
    , m_code(std::exchange(other.m_code, nullptr))
    , m_manager(std::exchange(other.m_manager, nullptr))
{
}

CallableStorage::~CallableStorage()
{
    if (m_manager)
        m_manager(nullptr, addressIn(m_room));
}

void CallableStorage::_swap(CallableStorage& other) noexcept
{
    std::swap(m_room, other.m_room);
    std::swap(m_code, other.m_code);
    std::swap(m_manager, other.m_manager);
}

void CallableStorage::_own(void* target, Manager manager) noexcept
{
    storeAddress(m_room, target);
    m_manager = manager;
}

void CallableStorage::_throwEmpty()
{
    throw std::bad_function_call();
}

} // namespace tbScripts
