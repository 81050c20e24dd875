#pragma once

#include "tbScripts/Api.h"

#include <tbCommon/SingletonClass.h>
#include <tbMemory/StringView.h>

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
/// The manager owns the environments until `kill`. `kill` removes an environment that runs a script
/// at once; its interpreter and bindings are destroyed when that run returns.
class TBSCRIPTS_API EnvironmentManager : public tbCommon::SingletonClass<EnvironmentManager>
{
public:
    ///@{
    /// Shares the environments of `other`.
    ///
    /// Compatibility: a copy creates no new environments. They are destroyed with the last manager
    /// that lists them, and `getInstance` still returns the same instance (decision 0014).
    EnvironmentManager(const EnvironmentManager& other);
    EnvironmentManager& operator=(const EnvironmentManager& other);
    ///@}

    /// Destroys the environments, one after the other; the manager forgets each one before it
    /// destroys it.
    ~EnvironmentManager() override;

    /// Returns the environment of exactly that name, never null. Creates one without interpreter if
    /// there is none.
    ///
    /// Ownership: the manager's.
    /// Valid until: `kill`.
    Environment* createOrRetrieve(const tbMemory::StringView& name);

private:
    friend class tbCommon::SingletonClass<EnvironmentManager>;

    EnvironmentManager();

    void _dropAll();

    struct Environments;

    Environments* m_environments; // owned
};

} // namespace tbScripts
