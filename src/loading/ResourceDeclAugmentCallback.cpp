#include "tbScripts/ResourceDeclAugmentCallback.h"

namespace tbScripts
{

ResourceDeclAugmentCallback::ResourceDeclAugmentCallback() = default;

ResourceDeclAugmentCallback::ResourceDeclAugmentCallback(const ResourceDeclAugmentCallback& other) =
    default;

ResourceDeclAugmentCallback&
ResourceDeclAugmentCallback::operator=(const ResourceDeclAugmentCallback&) = default;

ResourceDeclAugmentCallback::~ResourceDeclAugmentCallback() = default;

void ResourceDeclAugmentCallback::onScript(Script* /*script*/, tbExport::Node* /*declaration*/) {}

} // namespace tbScripts
