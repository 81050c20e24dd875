#include "support/HostObjects.h"

#include "support/Require.h"

namespace tbScripts::fuzz
{

namespace
{

HostObject& objectAt(void* object)
{
    return *static_cast<HostObject*>(object);
}

} // namespace

HostObject* HostObjects::make(FATE fate)
{
    m_objects.emplace_back();
    m_objects.back().fate = fate;
    m_addresses.insert(&m_objects.back());
    return &m_objects.back();
}

HostObject* HostObjects::anyHostOwned(std::size_t index)
{
    if (index < m_objects.size() && m_objects[index].fate == FATE::NEVER)
        return &m_objects[index];
    return make(FATE::NEVER);
}

void HostObjects::destroy(void* object)
{
    if (!object)
        return; // what a constructor gave that made none
    require(contains(object), "a destructor gets an object that the host has made");
    HostObject& destroyed = objectAt(object);
    ++destroyed.destructions;
    require(destroyed.fate != FATE::NEVER, "what the host owns is never destroyed");
    require(
        destroyed.destructions == 1 || destroyed.fate == FATE::ANY, "nothing is destroyed twice");
}

void HostObjects::expectBrand(void* object, int brand) const
{
    if (!contains(object))
        return;
    const int actual = objectAt(object).brand;
    require(actual == 0 || actual == brand, "no type is given an instance of an earlier one");
}

void HostObjects::use(void* object) const
{
    if (!object)
        return; // nil
    require(contains(object), "an instance holds an object that the host has made");
    const HostObject& used = objectAt(object);
    require(used.destructions == 0 || used.isAliased, "no destroyed object is used");
}

void HostObjects::shareWith(void* object, bool isOwner)
{
    if (!contains(object))
        return;
    HostObject& shared = objectAt(object);
    shared.isAliased = true;
    shared.brand = 0; // an instance that is made by name belongs to the present type
    if (isOwner)
        shared.fate = FATE::ANY;
}

void HostObjects::write(void* object, bool isTransfer)
{
    HostObject& written = objectAt(object);
    written.isAliased = true;
    written.brand = 0;
    if (!isTransfer)
        return;
    ++written.transfers;
    const bool wasOwned = written.fate == FATE::EXACTLY_ONCE || written.fate == FATE::AT_MOST_ONCE;
    written.fate = wasOwned && written.transfers == 1 ? FATE::AT_MOST_ONCE : FATE::ANY;
}

bool HostObjects::contains(const void* object) const
{
    return m_addresses.count(object) > 0;
}

void HostObjects::check() const
{
    for (const HostObject& object : m_objects)
    {
        require(
            object.fate != FATE::EXACTLY_ONCE || object.destructions == 1 || m_mayLeak,
            "what a script owned is destroyed when its interpreter has closed");
    }
}

} // namespace tbScripts::fuzz
