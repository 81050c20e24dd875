#pragma once

#include "tbScripts/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/StringView.h>

namespace tbScripts
{
class ScriptManager;
}

// One instance for the whole process: it lives in this library, hosts only refer to it.
extern template class TBSCRIPTS_API tbCommon::SingletonClass<tbScripts::ScriptManager>;

namespace tbScripts
{

class Script;
class ScriptRegistry;

/// The process's scripts by name, reached through `getInstance`. The manager owns them.
///
/// Names are compared byte by byte. An environment finishes a script that it runs, whether or not
/// the manager still lists the script.
class TBSCRIPTS_API ScriptManager : public tbCommon::SingletonClass<ScriptManager>
{
public:
    ///@{
    /// Shares the scripts of `other`.
    ///
    /// Compatibility: a copy creates no new scripts. They are destroyed with the last manager that
    /// lists them, and `getInstance` still returns the same instance (decision 0014).
    ScriptManager(const ScriptManager& other);
    ScriptManager& operator=(const ScriptManager& other);
    ///@}

    /// Returns the script `name`, never null. Adds a new script without sources and interpreter if
    /// there is none.
    ///
    /// Ownership: the manager's.
    /// Valid until: the script is erased or the manager is killed. The same holds for `get` and
    /// `getByIndex`.
    Script* createOrRetrieve(const tbMemory::StringView& name);

    /// Returns the script `name`, null if there is none.
    Script* get(const tbMemory::StringView& name) const;

    /// Returns script number `index`, null from `getCount` on. The order is unspecified; it stays
    /// the same until a script is added, renamed or erased. Takes time in proportion to `index`.
    Script* getByIndex(unsigned int index) const;

    /// Returns the number of scripts.
    unsigned int getCount() const;

    /// Lists the script `name` under `newName`, which becomes its name. Does nothing if there is no
    /// script `name`.
    ///
    /// Compatibility: if `newName` is taken, the existing script keeps it. The renamed script
    /// leaves the registry and its ownership passes to the caller, who deletes it after every copy
    /// of the manager that still lists it has been destroyed (decision 0014).
    void rename(const tbMemory::StringView& name, const tbMemory::StringView& newName);

    /// Destroys the script `name`; does nothing if there is none.
    void erase(const tbMemory::StringView& name);

private:
    friend class tbCommon::SingletonClass<ScriptManager>;
    friend struct ScriptManagerAccess; // lends the scripts to loading, which holds and walks them

    ScriptManager();
    ~ScriptManager() override;

    ScriptRegistry* m_registry; // owned
};

} // namespace tbScripts
