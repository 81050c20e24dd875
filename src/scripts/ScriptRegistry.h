#pragma once

#include "tbScripts/ScriptManager.h"

#include <tbMemory/StringView.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace tbScripts
{

class Script;

/// The scripts of a manager by name. Its public header does not name the containers.
class ScriptRegistry
{
public:
    using Scripts = std::unordered_map<std::string, std::shared_ptr<Script>>;

    ///@{
    /// Return a share of the script that is filed under `name`, and of `script` wherever it is
    /// filed; null if it is not.
    std::shared_ptr<Script> share(const tbMemory::StringView& name) const;
    std::shared_ptr<Script> shareOf(const Script& script) const;

    ///@}

    /// Returns the scripts in their order.
    const Scripts& getScripts() const { return m_scripts; }

    Scripts& editScripts() { return m_scripts; }

private:
    Scripts m_scripts;
};

/// Lends the scripts of a manager to those who load and save them.
struct ScriptManagerAccess
{
    static const ScriptRegistry& getRegistry(const ScriptManager& manager)
    {
        return *manager.m_registry;
    }

    /// Returns whether `script` lives on when its share is dropped: it is filed, or a rename has
    /// transferred it to the host. Host code may erase scripts, or kill the manager, while one is
    /// worked on.
    static bool hasOwner(const std::shared_ptr<Script>& script);
};

} // namespace tbScripts
