#pragma once

#include "tbScripts/Api.h"

namespace tbExport
{
class Node;
}

namespace tbScripts
{

class Script;

/// Interface through which a host takes part in loading a project.
///
/// The order of the virtual operations is part of the interface.
class TBSCRIPTS_API ResourceDeclAugmentCallback
{
public:
    ///@{
    /// Stateless interface; derive freely.
    ResourceDeclAugmentCallback();
    ResourceDeclAugmentCallback(const ResourceDeclAugmentCallback& other);
    ResourceDeclAugmentCallback& operator=(const ResourceDeclAugmentCallback& other);
    virtual ~ResourceDeclAugmentCallback();
    ///@}

    /// Called for each script of the project before it is compiled, so that changes made here are
    /// compiled. `declaration` is the object node that the script was read from. The default does
    /// nothing.
    ///
    /// A script that is erased here is left out of the result. A host that becomes the owner of
    /// `script` by a rename here must not delete it before `ProjectLoader::load` has returned.
    /// Ownership: `script` belongs to the `ScriptManager`.
    /// Valid until: the call returns, for `declaration`.
    virtual void onScript(Script* script, tbExport::Node* declaration);
};

} // namespace tbScripts
