#include "bindings/BindingMessages.h"
#include "bindings/FunctionAccess.h"
#include "bindings/TypedFunction.h"
#include "bindings/TypedNamespace.h"
#include "bindings/TypedUserType.h"
#include "core/ExceptionContainment.h"
#include "core/LogSources.h"

#include "tbScripts/Environment.h"
#include "tbScripts/LogManager.h"
#include "tbScripts/Namespace.h"
#include "tbScripts/UserType.h"
#include "tbScripts/typed/Declarations.h"

#include <cstddef>
#include <utility>

namespace tbScripts::typed
{

namespace
{

bool fillEnumeration(Namespace* scope, const TypeId& type, const Enumerator* enumerators, int count)
{
    TypedNamespace* const typed = scope ? TypedNamespace::of(*scope) : nullptr;
    return typed && typed->setEnumeration(type, enumerators, count);
}

UserType* typeOf(UserType* userType, const TypeId& type)
{
    TypedUserType* const typed = userType ? TypedUserType::of(*userType) : nullptr;
    return !typed || typed->setType(type) ? userType : nullptr;
}

// Declaring comes behind holding: it may run out of memory too.
Function* bindHeld(Function* function, Counted<TypedCallable> held)
{
    if (!function || !held)
        return function;
    const bool hasLeaf = held->getSignature().leaf;
    FunctionAccess::bindTyped(*function, held);
    TypedFunction* const published = hasLeaf ? TypedFunction::of(*function) : nullptr;
    return !published || published->publishLeaf() ? function : nullptr;
}

std::pair<Counted<TypedCallable>, Counted<TypedCallable>>
holdBoth(const BoundCallable& one, const BoundCallable& other)
{
    OwnedCallable unlessHeld(other);
    Counted<TypedCallable> heldOne = holdTyped(one);
    return {std::move(heldOne), holdTyped(unlessHeld.release())};
}

} // namespace

Function* bindTo(Function* function, const BoundCallable& callable)
{
    return bindHeld(function, holdTyped(callable));
}

Function* bindFunction(Environment& environment, const char* name, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    return bindHeld(environment.setFunc(name), std::move(held));
}

Function* bindFunction(Namespace& scope, const char* name, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    return bindHeld(scope.setFunction(name), std::move(held));
}

UserType* bindUserType(Environment& environment, const char* name, const TypeId& type)
{
    return typeOf(environment.setUserType(name), type);
}

UserType* bindUserType(Namespace& scope, const char* name, const TypeId& type)
{
    return typeOf(scope.setUserType(name), type);
}

void bindConstructor(UserType& type, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedConstructor(std::move(held));
}

void bindDestructor(UserType& type, void (*destroy)(void* object))
{
    type.setDestructor(destroy);
}

Function* bindMethod(UserType& type, const char* name, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    return bindHeld(type.setStaticMethod(name), std::move(held));
}

Function* bindOperator(UserType& type, BUILT_IN_FUNCTION which, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    return bindHeld(type.setOperator(which), std::move(held));
}

void bindMember(UserType& type, const char* name, const Member& member)
{
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setMember(name, member);
}

void bindProperty(
    UserType& type, const char* name, const BoundCallable& getter, const BoundCallable& setter)
{
    auto [heldGetter, heldSetter] = holdBoth(getter, setter);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedProperty(name, std::move(heldGetter), std::move(heldSetter));
}

void bindIndex(UserType& type, const BoundCallable& read, const BoundCallable& write)
{
    auto [heldRead, heldWrite] = holdBoth(read, write);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedIndex(std::move(heldRead), std::move(heldWrite));
}

void bindBase(UserType& type, const TypeId& base, void* (*toBase)(void* object))
{
    TypedUserType* const typed = TypedUserType::of(type);
    if (typed && !typed->addBase(base, toBase))
    {
        LogManager::getInstance()->log(
            messages::baseNotBound(type.getFullName()), LOG_SOURCE_LUA_USER_TYPE);
    }
}

void bindNames(UserType& type, const BoundCallable& read, const BoundCallable& write)
{
    auto [heldRead, heldWrite] = holdBoth(read, write);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedNames(std::move(heldRead), std::move(heldWrite));
}

void bindIteration(UserType& type, const BoundCallable& walk)
{
    Counted<TypedCallable> held = holdTyped(walk);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedIteration(std::move(held));
}

bool bindEnumeration(
    Environment& environment,
    const char* name,
    const TypeId& type,
    const Enumerator* enumerators,
    int count)
{
    return fillEnumeration(environment.setNamespace(name), type, enumerators, count);
}

bool bindEnumeration(
    Namespace& scope,
    const char* name,
    const TypeId& type,
    const Enumerator* enumerators,
    int count)
{
    return fillEnumeration(scope.setNamespace(name), type, enumerators, count);
}

Function*
describe(Function* function, const char* text, const char* const* parameterNames, int count)
{
    TypedCallable* const callable =
        function ? FunctionAccess::getDefinition(*function).typed.get() : nullptr;
    if (!callable)
        return nullptr;
    callable->documentation = text ? text : "";
    callable->parameterNames.assign(parameterNames, parameterNames + count);
    return function;
}

const char* getText(const Function& function)
{
    const TypedCallable* const callable = FunctionAccess::getDefinition(function).typed.get();
    return callable ? callable->documentation.c_str() : nullptr;
}

const char* getParameterName(const Function& function, int number)
{
    const TypedCallable* const callable = FunctionAccess::getDefinition(function).typed.get();
    if (!callable || number < 0 ||
        static_cast<std::size_t>(number) >= callable->parameterNames.size())
        return nullptr;
    return callable->parameterNames[static_cast<std::size_t>(number)].c_str();
}

Function* findMethod(UserType& type, const char* name)
{
    return type.getMethod(name);
}

} // namespace tbScripts::typed
