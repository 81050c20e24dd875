#pragma once

#include <tbMemory/StringView.h>

#include <memory>

namespace tbScripts
{

class Function;
class Namespace;
class UserType;

/// Creates the bindings of one interpreter, published as globals.
class BindingFactory
{
public:
    ///@{
    /// Creates a binding and publishes it; null if that failed, which is logged.
    virtual std::unique_ptr<Function> createFunction(const tbMemory::StringView& name) = 0;
    virtual std::unique_ptr<UserType> createUserType(const tbMemory::StringView& name) = 0;
    virtual std::unique_ptr<Namespace> createNamespace(const tbMemory::StringView& name) = 0;
    ///@}

    ///@{
    /// Publishes a binding that was created for an earlier interpreter in the present one. Within
    /// its own interpreter a binding is left as it is. A user type brings its constructor and
    /// destructor along; a namespace is empty then.
    virtual void installFunction(Function& function) = 0;
    virtual void installUserType(UserType& type) = 0;
    virtual void installNamespace(Namespace& scope) = 0;
    ///@}

    ///@{
    /// Resolves a duplicate declaration: a metamethod that ran while `created` was being published
    /// declared `existing` under the same name. `existing` wins and stays published, as new (a
    /// namespace keeps what is in it); `created` is destroyed. Back-ends that create nothing have
    /// nothing to do.
    virtual void resolveDuplicate(std::unique_ptr<Function> created, Function& existing);
    virtual void resolveDuplicate(std::unique_ptr<UserType> created, UserType& existing);
    virtual void resolveDuplicate(std::unique_ptr<Namespace> created, Namespace& existing);
    ///@}

protected:
    ~BindingFactory() = default;
};

} // namespace tbScripts
