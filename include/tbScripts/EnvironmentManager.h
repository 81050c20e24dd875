#pragma once

#include "tbScripts/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/StringView.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace tbScripts
{
class EnvironmentManager;
}

// One instance for the whole process: it lives in this library, hosts only refer to it.
extern template class TBSCRIPTS_API tbCommon::SingletonClass<tbScripts::EnvironmentManager>;

namespace tbScripts
{

class Environment;

/// The process's environments by name, reached through `getInstance`.
///
/// It owns what it hands out, until `kill`. An environment that runs a script while the manager is
/// killed leaves the manager at once; its interpreter and bindings follow when that run returns.
class TBSCRIPTS_API EnvironmentManager : public tbCommon::SingletonClass<EnvironmentManager>
{
public:
    ///@{
    /// Takes a share in the environments of `other`.
    ///
    /// Kept: a copy shares the environments. They end with the last manager that has them, and
    /// `getInstance` goes on giving the instance that it gave before.
    EnvironmentManager(const EnvironmentManager& other);
    EnvironmentManager& operator=(const EnvironmentManager& other);
    ///@}

    /// Destroys the environments, one after the other; each has left the manager before it goes.
    ~EnvironmentManager() override;

    /// Returns the environment of exactly that name; makes one without interpreter if there is
    /// none. Never null.
    ///
    /// Ownership: the manager's. Valid until: `kill`.
    Environment* createOrRetrieve(const tbMemory::StringView& name);

private:
    friend class tbCommon::SingletonClass<EnvironmentManager>;

    EnvironmentManager();

    void _dropAll();

    std::unordered_map<std::string, std::shared_ptr<Environment>> m_environments;
};

} // namespace tbScripts
