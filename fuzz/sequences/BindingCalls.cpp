// Calls that fill host functions, user types and namespaces.

#include "sequences/Names.h"
#include "sequences/World.h"

#include <stdexcept>

namespace tbScripts::fuzz
{

namespace
{

UserType* findUserType(World& world)
{
    return world.anyEnvironment().getUserType(world.bytes().numbered<8>(TYPE_NAMES));
}

Namespace* findNamespace(World& world)
{
    return world.anyEnvironment().getNamespace(world.bytes().numbered<8>(NAMESPACE_NAMES));
}

FUNCTION_PARAMETER_TYPE anyKind(World& world)
{
    return static_cast<FUNCTION_PARAMETER_TYPE>(world.bytes().choice<16>(11));
}

// Does one thing to a function that was just found or declared.
void change(World& world, Function* function)
{
    if (!function)
        return;
    switch (world.bytes().choice<16>(8))
    {
    case 0:
        return function->reset();
    case 1:
    case 2:
    {
        const FUNCTION_PARAMETER_TYPE kind = anyKind(world);
        return function->addParameter(
            kind, world.bytes().flag() ? world.bytes().numbered<8>(TYPE_NAMES) : "");
    }
    case 3:
    {
        const Function copy(*function);
        *function = copy;
        return;
    }
    case 4:
    {
        Function other("other");
        other = *function;
        other.addParameter(anyKind(world));
        other.defaultFunction(Parameters());
        return;
    }
    default:
        return function->setFunction(world.makeCallable());
    }
}

void setConstructor(World& world)
{
    world.trace("set constructor");
    world.makeInstantiable(findUserType(world));
}

void setDestructor(World& world)
{
    world.trace("set destructor");
    if (UserType* const type = findUserType(world))
        type->setDestructor(world.makeDestructor());
}

void setMethod(World& world)
{
    world.trace("set method");
    UserType* const type = findUserType(world);
    if (!type)
        return;
    const char* const name = world.bytes().numbered<8>(METHOD_NAMES);
    const unsigned int activity = world.getActivity();
    Function* const method = world.bytes().flag() ? type->setMethod(name, world.bytes().flag())
                                                  : type->setStaticMethod(name);
    if (activity == world.getActivity() && method)
        method->setFunction(world.makeCallable());
}

void setOperator(World& world)
{
    world.trace("set operator");
    UserType* const type = findUserType(world);
    if (!type)
        return;
    const unsigned int activity = world.getActivity();
    Function* const function =
        type->setOperator(static_cast<BUILT_IN_FUNCTION>(world.bytes().choice<32>(14)));
    if (activity == world.getActivity() && function)
        function->setFunction(world.makeCallable());
}

void changeMethod(World& world)
{
    world.trace("change method");
    if (const UserType* const type = findUserType(world))
        change(world, type->getMethod(world.bytes().numbered<8>(METHOD_NAMES)));
}

void setField(World& world)
{
    world.trace("set field");
    UserType* const type = findUserType(world);
    if (!type)
        return;
    UserTypeFieldDescriptor field;
    field.name = world.bytes().numbered<8>(METHOD_NAMES);
    field.type = anyKind(world);
    field.userTypeName = world.bytes().numbered<8>(TYPE_NAMES);
    if (world.bytes().flag())
    {
        const Function::Callable get = world.makeCallable();
        field.getter = [get, &world](void* object) -> FunctionParameter
        {
            world.objects().use(object);
            if (!get)
                return 0.5;
            return get(Parameters());
        };
    }
    if (world.bytes().flag())
    {
        const Function::Callable set = world.makeCallable();
        field.setter = [set](const Parameters& arguments)
        {
            if (set)
                set(arguments);
        };
    }
    type->setField(field);
}

void setArrayAccess(World& world)
{
    world.trace("set array access");
    UserType* const type = findUserType(world);
    if (!type)
        return;
    UserTypeArrayDescriptor array;
    array.type = anyKind(world);
    array.userTypeName = world.bytes().numbered<8>(TYPE_NAMES);
    if (world.bytes().flag())
        array.read = world.makeCallable();
    if (world.bytes().flag())
    {
        const Function::Callable set = world.makeCallable();
        array.write = [set](const Parameters& arguments)
        {
            if (set)
                set(arguments);
        };
    }
    type->setArrayAccess(array);
}

void clearType(World& world)
{
    world.trace("clear type");
    if (UserType* const type = findUserType(world))
        type->clear();
}

void setNamespaceVariable(World& world)
{
    world.trace("set namespace variable");
    Namespace* const scope = findNamespace(world);
    if (!scope)
        return;
    const char* const name = world.bytes().numbered<8>(VARIABLE_NAMES);
    switch (world.bytes().choice<16>(7))
    {
    case 0:
        return scope->setVar(name, true);
    case 1:
        return scope->setVar(name, 7);
    case 2:
        return scope->setVar(name, 0.5F);
    case 3:
        return scope->setVar(name, 1e-300);
    case 4:
        return scope->setVar(name, tbMemory::StringView(world.bytes().text(12)));
    case 5:
    {
        const char* const type = world.bytes().numbered<8>(TYPE_NAMES);
        return scope->setVar(name, type, world.objects().anyHostOwned(world.bytes().below(8)));
    }
    default:
        return scope->setVar(name, world.anyReference());
    }
}

void setNamespaceFunction(World& world)
{
    world.trace("set namespace function");
    Namespace* const scope = findNamespace(world);
    if (!scope)
        return;
    const unsigned int activity = world.getActivity();
    Function* const function = scope->setFunction(world.bytes().numbered<8>(FUNCTION_NAMES));
    if (activity == world.getActivity() && function)
        function->setFunction(world.makeCallable());
}

void setNamespaceType(World& world)
{
    world.trace("set namespace type");
    Namespace* const scope = findNamespace(world);
    if (!scope)
        return;
    const unsigned int activity = world.getActivity();
    UserType* const made = scope->setUserType("T");
    if (activity == world.getActivity())
        world.makeInstantiable(made);
    else
        world.objects().allowLeaks(); // the type may be there, without destructor
}

void setNamespaceNamespace(World& world)
{
    world.trace("set namespace namespace");
    if (Namespace* const scope = findNamespace(world))
        scope->setNamespace(world.bytes().flag() ? "m" : "k");
}

void clearNamespace(World& world)
{
    world.trace("clear namespace");
    if (Namespace* const scope = findNamespace(world))
        scope->clear();
}

void releaseNamespace(World& world)
{
    world.trace("release namespace");
    if (Namespace* const scope = findNamespace(world))
        scope->release();
}

// Whatever scripts keep of the released type belongs to no type any more.
void releaseAndDeclareAnew(World& world)
{
    world.trace("release and declare anew");
    Environment& environment = world.anyEnvironment();
    Namespace* const scope = environment.getNamespace("n");
    if (!scope)
        return;
    const unsigned int activity = world.getActivity();
    scope->release();
    UserType* const made =
        activity == world.getActivity() ? environment.setUserType("n::T") : nullptr;
    if (made && activity == world.getActivity())
        world.makeBranded(*made);
    else
        world.objects().allowLeaks(); // the type may be there, without destructor
}

} // namespace

void performBindingCall(World& world)
{
    Environment& environment = world.anyEnvironment();
    const char* const name = world.bytes().numbered<8>(FUNCTION_NAMES);
    const unsigned int activity = world.getActivity();
    Function* const function =
        world.bytes().flag() ? environment.setFunc(name) : environment.getFunc(name);
    if (activity == world.getActivity())
        change(world, function);
}

void performUserTypeCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &setConstructor},
         {1, &setDestructor},
         {2, &setMethod},
         {3, &setMethod},
         {4, &setOperator},
         {5, &changeMethod},
         {6, &setField},
         {7, &setField},
         {8, &setArrayAccess},
         {9, &clearType}});
    world.bytes().caseOf(CALLS)(world);
}

void performNamespaceCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &setNamespaceVariable},
         {1, &setNamespaceFunction},
         {2, &setNamespaceType},
         {3, &setNamespaceNamespace},
         {4, &clearNamespace},
         {5, &releaseNamespace},
         {6, &releaseAndDeclareAnew}});
    world.bytes().caseOf(CALLS)(world);
}

} // namespace tbScripts::fuzz
