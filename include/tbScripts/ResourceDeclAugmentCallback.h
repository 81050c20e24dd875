#pragma once

#include "tbScripts/Api.h"

namespace tbExport
{
class Node;
}

namespace tbScripts
{

class Script;

/// What a host derives from to take part in loading a project.
///
/// The order of the virtual operations is part of the interface.
class TBSCRIPTS_API ResourceDeclAugmentCallback
{
public:
    ///@{
    /// There is nothing to make, copy or end here; a derived class does as it likes.
    ResourceDeclAugmentCallback();
    ResourceDeclAugmentCallback(const ResourceDeclAugmentCallback& other);
    ResourceDeclAugmentCallback& operator=(const ResourceDeclAugmentCallback& other);
    virtual ~ResourceDeclAugmentCallback();
    ///@}

    /// Called for each script of the project, before it is compiled: what changes here is compiled.
    /// `declaration` is the object node that the script came from. Does nothing by itself.
    ///
    /// Valid until: the call returns, for `declaration`; `script` belongs to the `ScriptManager`,
    /// and is left out of the result if it is erased here. Who gives it away by a rename here must
    /// not delete it before the loading ends.
    virtual void onScript(Script* script, tbExport::Node* declaration);
};

} // namespace tbScripts
