#include "support/InjectedAllocator.h"

namespace tbScripts::test
{

InjectedAllocator::InjectedAllocator(lua_State* state)
    : m_state(state)
    , m_allocate(nullptr)
    , m_allocatorData(nullptr)
    , m_allowed(0)
    , m_isRefusing(false)
    , m_hasRefused(false)
{
    m_allocate = lua_getallocf(state, &m_allocatorData);
    lua_setallocf(state, &_allocate, this);
}

InjectedAllocator::~InjectedAllocator()
{
    lua_setallocf(m_state, m_allocate, m_allocatorData);
}

void InjectedAllocator::refuseAfter(std::size_t allowed)
{
    m_allowed = allowed;
    m_isRefusing = true;
    m_hasRefused = false;
}

void InjectedAllocator::allowAll()
{
    m_isRefusing = false;
}

bool InjectedAllocator::hasRefused() const
{
    return m_hasRefused;
}

void* InjectedAllocator::_allocate(
    void* self, void* block, std::size_t oldSize, std::size_t newSize)
{
    InjectedAllocator& injected = *static_cast<InjectedAllocator*>(self);
    // Giving memory back always works, as the interpreter requires.
    const bool isRequest = newSize > oldSize;
    if (isRequest && injected.m_isRefusing)
    {
        if (injected.m_allowed == 0)
        {
            injected.m_hasRefused = true;
            return nullptr;
        }
        --injected.m_allowed;
    }
    return injected.m_allocate(injected.m_allocatorData, block, oldSize, newSize);
}

} // namespace tbScripts::test
