#pragma once

// What the typed layer asks the library to declare. All of it takes over the callables: it destroys
// those that it cannot declare.

#include "tbScripts/BuiltInFunction.h"
#include "tbScripts/typed/Thunks.h"

namespace tbScripts
{

class Environment;
class Function;
class Namespace;
class UserType;

namespace typed
{

/// Binds `callable` to a function that was declared before; its declared parameters have no meaning
/// until `Function::setFunction` binds another callable. Returns `function`.
TBSCRIPTS_API Function* bindTo(Function* function, const BoundCallable& callable);

///@{
/// Declare a function, as `setFunc` does, and bind it. Null on failure.
TBSCRIPTS_API Function*
bindFunction(Environment& environment, const char* name, const BoundCallable& callable);
TBSCRIPTS_API Function*
bindFunction(Namespace& scope, const char* name, const BoundCallable& callable);
///@}

/// Makes one callable of several: which is called, the arguments of each call decide. Takes them
/// over. If two of them would take the same arguments, that is logged (tag "Function"), and the
/// later one is dropped.
TBSCRIPTS_API BoundCallable bindOverloads(const BoundCallable* callables, int count);

///@{
/// Declare the user type `name` for the type of the host with that identity, or find it. Null on
/// failure.
TBSCRIPTS_API UserType*
bindUserType(Environment& environment, const char* name, const TypeId& type);
TBSCRIPTS_API UserType* bindUserType(Namespace& scope, const char* name, const TypeId& type);
///@}

TBSCRIPTS_API void bindConstructor(UserType& type, const BoundCallable& callable);
TBSCRIPTS_API void bindDestructor(UserType& type, void (*destroy)(void* object));
TBSCRIPTS_API Function* bindMethod(UserType& type, const char* name, const BoundCallable& callable);
TBSCRIPTS_API void bindMember(UserType& type, const char* name, const Member& member);
TBSCRIPTS_API void bindProperty(
    UserType& type, const char* name, const BoundCallable& getter, const BoundCallable& setter);
TBSCRIPTS_API void bindIndex(UserType& type, const BoundCallable& read, const BoundCallable& write);
TBSCRIPTS_API void bindNames(UserType& type, const BoundCallable& read, const BoundCallable& write);
TBSCRIPTS_API Function*
bindOperator(UserType& type, BUILT_IN_FUNCTION which, const BoundCallable& callable);
TBSCRIPTS_API void bindBase(UserType& type, const TypeId& base, void* (*toBase)(void* object));

/// `walk` returns a table for an instance, over which `pairs` goes.
TBSCRIPTS_API void bindIteration(UserType& type, const BoundCallable& walk);

struct Enumerator
{
    const char* name;
    Integer value;
};

///@{
/// Declare a table with the values of an enumeration by name and the names by value.
TBSCRIPTS_API bool bindEnumeration(
    Environment& environment,
    const char* name,
    const TypeId& type,
    const Enumerator* enumerators,
    int count);
TBSCRIPTS_API bool bindEnumeration(
    Namespace& scope,
    const char* name,
    const TypeId& type,
    const Enumerator* enumerators,
    int count);
///@}

/// Says in a line what a typed function does, and names its parameters; null for one that is not
/// typed.
TBSCRIPTS_API Function*
describe(Function* function, const char* text, const char* const* parameterNames, int count);

/// What was said of a typed function; null for all others. Valid until: it is bound anew.
TBSCRIPTS_API const char* getText(const Function& function);

/// The name of parameter `number`, counted from 0, not from the instance of a method; null if it
/// has none.
TBSCRIPTS_API const char* getParameterName(const Function& function, int number);

/// The method or function `name` of a type, null if there is none.
TBSCRIPTS_API Function* findMethod(UserType& type, const char* name);

template <auto... F>
BoundCallable overloads()
{
    const BoundCallable all[] = {{&FunctionSignature<F>::SIGNATURE}...};
    return bindOverloads(all, static_cast<int>(sizeof...(F)));
}

/// One function, or several that the arguments choose between.
template <auto F, auto... Others>
BoundCallable functions()
{
    if constexpr (sizeof...(Others) == 0)
        return {&FunctionSignature<F>::SIGNATURE};
    else
        return overloads<F, Others...>();
}

/// The same for methods of `Self`.
template <typename Self, auto F, auto... Others>
BoundCallable methods()
{
    if constexpr (sizeof...(Others) == 0)
        return {&METHOD_SIGNATURE<F, Self>};
    else
    {
        const BoundCallable all[] = {
            {&METHOD_SIGNATURE<F, Self>}, {&METHOD_SIGNATURE<Others, Self>}...};
        return bindOverloads(all, static_cast<int>(sizeof...(Others)) + 1);
    }
}

} // namespace typed
} // namespace tbScripts
