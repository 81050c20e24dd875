#include "tbScripts/ScriptManager.h"

#include "core/NameRegistry.h"
#include "scripts/ScriptRegistry.h"

#include "tbScripts/Script.h"

#include <algorithm>
#include <iterator>
#include <utility>

template class tbCommon::SingletonClass<tbScripts::ScriptManager>;

namespace tbScripts
{

namespace
{

// Destroys a script when the last manager releases it, unless a rename has made the host its owner.
struct ScriptDeleter
{
    bool isGivenAway = false;

    void operator()(Script* script) const
    {
        if (!isGivenAway)
            delete script;
    }
};

} // namespace

ScriptManager::ScriptManager()
    : m_registry(new ScriptRegistry)
{
}

ScriptManager::ScriptManager(const ScriptManager& other)
    : tbCommon::SingletonClass<ScriptManager>(other)
    , m_registry(new ScriptRegistry(*other.m_registry))
{
}

ScriptManager& ScriptManager::operator=(const ScriptManager& other)
{
    if (this != &other)
        *m_registry = *other.m_registry;
    return *this;
}

ScriptManager::~ScriptManager()
{
    delete m_registry;
}

Script* ScriptManager::createOrRetrieve(const tbMemory::StringView& name)
{
    if (Script* const filed = get(name))
        return filed;
    const std::shared_ptr<Script> script(new Script, ScriptDeleter());
    script->setName(name);
    m_registry->editScripts().emplace(keyOf(name), script);
    return script.get();
}

Script* ScriptManager::get(const tbMemory::StringView& name) const
{
    return m_registry->share(name).get();
}

Script* ScriptManager::getByIndex(unsigned int index) const
{
    const ScriptRegistry::Scripts& scripts = m_registry->getScripts();
    return index < scripts.size() ? std::next(scripts.begin(), index)->second.get() : nullptr;
}

unsigned int ScriptManager::getCount() const
{
    return static_cast<unsigned int>(m_registry->getScripts().size());
}

void ScriptManager::rename(const tbMemory::StringView& name, const tbMemory::StringView& newName)
{
    std::string newKey = keyOf(newName); // first: the views may be those of the script itself
    ScriptRegistry::Scripts& scripts = m_registry->editScripts();
    const auto filed = scripts.find(keyOf(name));
    if (filed == scripts.end())
        return;
    filed->second->setName(newKey);
    // From here on entries are only moved, which needs no memory: a lack of it loses no script.
    auto entry = scripts.extract(filed);
    entry.key() = std::move(newKey);
    const auto refiled = scripts.insert(std::move(entry));
    if (!refiled.inserted)
        std::get_deleter<ScriptDeleter>(refiled.node.mapped())->isGivenAway = true;
}

void ScriptManager::erase(const tbMemory::StringView& name)
{
    m_registry->editScripts().erase(keyOf(name));
}

std::shared_ptr<Script> ScriptRegistry::share(const tbMemory::StringView& name) const
{
    const auto filed = m_scripts.find(keyOf(name));
    return filed == m_scripts.end() ? nullptr : filed->second;
}

std::shared_ptr<Script> ScriptRegistry::shareOf(const Script& script) const
{
    std::shared_ptr<Script> sameName = share(script.getName());
    if (sameName.get() == &script)
        return sameName;
    // The host has changed the script's name without `rename`.
    const auto filed = std::find_if(
        m_scripts.begin(),
        m_scripts.end(),
        [&script](const auto& entry) { return entry.second.get() == &script; });
    return filed == m_scripts.end() ? nullptr : filed->second;
}

bool ScriptManagerAccess::hasOwner(const std::shared_ptr<Script>& script)
{
    if (std::get_deleter<ScriptDeleter>(script)->isGivenAway)
        return true;
    const ScriptManager* const manager = ScriptManager::getInstanceIfExisting();
    return manager && getRegistry(*manager).shareOf(*script);
}

} // namespace tbScripts
