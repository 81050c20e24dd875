#include "environments/BindingFactory.h"

#include "tbScripts/Function.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"

namespace tbScripts
{

void BindingFactory::resolveDuplicate(std::unique_ptr<Function> /*created*/, Function& /*existing*/)
{
}

void BindingFactory::resolveDuplicate(std::unique_ptr<UserType> /*created*/, UserType& /*existing*/)
{
}

void BindingFactory::resolveDuplicate(
    std::unique_ptr<Namespace> /*created*/, Namespace& /*existing*/)
{
}

} // namespace tbScripts
