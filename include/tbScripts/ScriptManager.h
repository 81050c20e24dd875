#pragma once

#include "tbScripts/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/StringView.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace tbScripts
{
class ScriptManager;
}

// One instance for the whole process: it lives in this library, hosts only refer to it.
extern template class TBSCRIPTS_API tbCommon::SingletonClass<tbScripts::ScriptManager>;

namespace tbScripts
{

class ContentLoader;
class ProjectLoader;
class Script;

/// The process's scripts by name, reached through `getInstance`. It owns what it hands out.
///
/// Names are compared byte by byte. Environments go on with a compiled script that they run,
/// whether or not the manager still has it.
class TBSCRIPTS_API ScriptManager : public tbCommon::SingletonClass<ScriptManager>
{
public:
    ///@{
    /// Takes a share in the scripts of `other`.
    ///
    /// Kept: a copy shares the scripts. They end with the last manager that has them, and
    /// `getInstance` goes on giving the instance that it gave before.
    ScriptManager(const ScriptManager& other);
    ScriptManager& operator=(const ScriptManager& other);
    ///@}

    /// Returns the script filed under `name`; files a new one, without sources and interpreter, if
    /// there is none. Never null.
    ///
    /// Ownership: the manager's. Valid until: it is erased or the manager killed; a rename changes
    /// nothing. The same holds for the next two.
    Script* createOrRetrieve(const tbMemory::StringView& name);

    /// Returns the script filed under `name`, null if there is none.
    Script* get(const tbMemory::StringView& name) const;

    /// Returns script number `index`, null from `getCount` on. The order is any, and stays as long
    /// as nothing is filed, renamed or erased. Takes time in proportion to `index`.
    Script* getByIndex(unsigned int index) const;

    /// Returns how many scripts are filed.
    unsigned int getCount() const;

    /// Files the script `name` under `newName`, which becomes its name. Does nothing if there is no
    /// script `name`.
    ///
    /// Kept: if another script is filed under `newName`, that one stays, and the renamed script is
    /// filed nowhere any more. It goes on living, and belongs to whoever holds its pointer, who
    /// deletes it; if a copy of this manager still files it, not before that copy has let it go.
    void rename(const tbMemory::StringView& name, const tbMemory::StringView& newName);

    /// Destroys the script filed under `name`; does nothing if there is none.
    void erase(const tbMemory::StringView& name);

private:
    friend class tbCommon::SingletonClass<ScriptManager>;
    friend class ContentLoader; // holds the script that it works on
    friend class ProjectLoader; // walks the scripts in their order

    using Scripts = std::unordered_map<std::string, std::shared_ptr<Script>>;

    ScriptManager();
    ~ScriptManager() override;

    // Return a share of the script that is filed under `name`, and of `script` wherever it is
    // filed; null if it is not.
    std::shared_ptr<Script> _share(const tbMemory::StringView& name) const;
    std::shared_ptr<Script> _shareOf(const Script& script) const;

    // Whether `script` lives on when its share is dropped: it is filed, or a rename has given it
    // away. Host code may erase scripts, or kill the manager, while one is worked on.
    static bool _hasOwner(const std::shared_ptr<Script>& script);

    Scripts m_scripts;
};

} // namespace tbScripts
