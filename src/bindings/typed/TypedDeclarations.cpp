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
    if (TypedUserType* const typed = userType ? TypedUserType::of(*userType) : nullptr)
        typed->setType(type);
    return userType;
}

} // namespace

Function* bindTo(Function* function, const BoundCallable& callable)
{
    Counted<TypedCallable> held = holdTyped(callable);
    if (!function || !held)
        return function;
    FunctionAccess::bindTyped(*function, std::move(held));
    TypedFunction* const published =
        callable.signature->leaf ? TypedFunction::of(*function) : nullptr;
    if (published)
        published->publishLeaf();
    return function;
}

Function* bindFunction(Environment& environment, const char* name, const BoundCallable& callable)
{
    return bindTo(environment.setFunc(name), callable);
}

Function* bindFunction(Namespace& scope, const char* name, const BoundCallable& callable)
{
    return bindTo(scope.setFunction(name), callable);
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
    return bindTo(type.setStaticMethod(name), callable);
}

Function* bindOperator(UserType& type, BUILT_IN_FUNCTION which, const BoundCallable& callable)
{
    return bindTo(type.setOperator(which), callable);
}

void bindMember(UserType& type, const char* name, const Member& member)
{
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setMember(name, member);
}

void bindProperty(
    UserType& type, const char* name, const BoundCallable& getter, const BoundCallable& setter)
{
    Counted<TypedCallable> heldGetter = holdTyped(getter);
    Counted<TypedCallable> heldSetter = holdTyped(setter);
    if (TypedUserType* const typed = TypedUserType::of(type))
        typed->setTypedProperty(name, std::move(heldGetter), std::move(heldSetter));
}

void bindIndex(UserType& type, const BoundCallable& read, const BoundCallable& write)
{
    Counted<TypedCallable> heldRead = holdTyped(read);
    Counted<TypedCallable> heldWrite = holdTyped(write);
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
    Counted<TypedCallable> heldRead = holdTyped(read);
    Counted<TypedCallable> heldWrite = holdTyped(write);
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
