// Classes with 25 members each, bound through the described interface.

#include "Units.h"

#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/UserType.h>

#include <initializer_list>
#include <utility>

namespace
{

using namespace tbScripts;

using Arguments = tbMemory::BufferView<FunctionParameter>;

template <typename Unit>
Unit& unitIn(const Arguments& arguments)
{
    return *static_cast<Unit*>(arguments[0].getUserTypeObject());
}

void method(
    UserType& type,
    const char* name,
    std::initializer_list<FUNCTION_PARAMETER_TYPE> parameters,
    Function::Callable callable)
{
    Function* const function = type.setMethod(name, false);
    if (!function)
        return;
    for (const FUNCTION_PARAMETER_TYPE parameter : parameters)
        function->addParameter(parameter);
    function->setFunction(std::move(callable));
}

void field(
    UserType& type,
    const char* name,
    FUNCTION_PARAMETER_TYPE kind,
    decltype(UserTypeFieldDescriptor::getter) getter,
    decltype(UserTypeFieldDescriptor::setter) setter)
{
    UserTypeFieldDescriptor descriptor;
    descriptor.name = name;
    descriptor.type = kind;
    descriptor.getter = std::move(getter);
    descriptor.setter = std::move(setter);
    type.setField(std::move(descriptor));
}

// [each]
void bindUnit0(Environment& environment)
{
    using Unit = bench::Unit0;
    UserType* const type = environment.setUserType("Unit0");
    if (!type)
        return;
    type->setConstructor([](const Arguments&) { return new Unit(); });
    type->setDestructor([](void* object) { delete static_cast<Unit*>(object); });
    method(
        *type,
        "hurt",
        {PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).hurt(arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "heal",
        {PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).heal(arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "isAlive",
        {},
        [](const Arguments& arguments) { return unitIn<Unit>(arguments).isAlive(); });
    method(
        *type,
        "distanceTo",
        {PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments) {
            return unitIn<Unit>(arguments).distanceTo(
                arguments[1].getDouble(), arguments[2].getDouble());
        });
    method(
        *type,
        "moveTo",
        {PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).moveTo(arguments[1].getDouble(), arguments[2].getDouble());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "countItems",
        {},
        [](const Arguments& arguments) { return unitIn<Unit>(arguments).countItems(); });
    method(
        *type,
        "addItem",
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).addItem(arguments[1].getInt(), arguments[2].getInt());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "hasItem",
        {PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return unitIn<Unit>(arguments).hasItem(arguments[1].getInt()); });
    method(
        *type,
        "getName",
        {},
        [](const Arguments& arguments)
        { return FunctionParameter(unitIn<Unit>(arguments).getName().c_str()); });
    method(
        *type,
        "setName",
        {PARAM_TYPE_STRING},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).setName(arguments[1].getString());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "say",
        {PARAM_TYPE_STRING},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).say(arguments[1].getString());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "damageAgainst",
        {PARAM_TYPE_INT, PARAM_TYPE_BOOL},
        [](const Arguments& arguments) {
            return unitIn<Unit>(arguments).damageAgainst(
                arguments[1].getInt(), arguments[2].getBool());
        });
    method(
        *type,
        "wait",
        {PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).wait(arguments[1].getDouble());
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "stop",
        {},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).stop();
            return FunctionParameter::VOID;
        });
    method(
        *type,
        "rankAmong",
        {PARAM_TYPE_INT},
        [](const Arguments& arguments)
        { return unitIn<Unit>(arguments).rankAmong(arguments[1].getInt()); });
    method(
        *type,
        "canSee",
        {PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE, PARAM_TYPE_DOUBLE},
        [](const Arguments& arguments)
        {
            return unitIn<Unit>(arguments).canSee(
                arguments[1].getDouble(), arguments[2].getDouble(), arguments[3].getDouble());
        });
    method(
        *type,
        "rename",
        {PARAM_TYPE_STRING, PARAM_TYPE_BOOL},
        [](const Arguments& arguments)
        {
            unitIn<Unit>(arguments).rename(arguments[1].getString(), arguments[2].getBool());
            return FunctionParameter::VOID;
        });
    field(
        *type,
        "health",
        PARAM_TYPE_DOUBLE,
        [](void* object) { return static_cast<Unit*>(object)->health; },
        [](const Arguments& arguments)
        { unitIn<Unit>(arguments).health = arguments[1].getDouble(); });
    field(
        *type,
        "speed",
        PARAM_TYPE_DOUBLE,
        [](void* object) { return static_cast<Unit*>(object)->speed; },
        [](const Arguments& arguments)
        { unitIn<Unit>(arguments).speed = arguments[1].getDouble(); });
    field(
        *type,
        "x",
        PARAM_TYPE_DOUBLE,
        [](void* object) { return static_cast<Unit*>(object)->x; },
        [](const Arguments& arguments) { unitIn<Unit>(arguments).x = arguments[1].getDouble(); });
    field(
        *type,
        "y",
        PARAM_TYPE_DOUBLE,
        [](void* object) { return static_cast<Unit*>(object)->y; },
        [](const Arguments& arguments) { unitIn<Unit>(arguments).y = arguments[1].getDouble(); });
    field(
        *type,
        "level",
        PARAM_TYPE_INT,
        [](void* object) { return static_cast<Unit*>(object)->level; },
        [](const Arguments& arguments) { unitIn<Unit>(arguments).level = arguments[1].getInt(); });
    field(
        *type,
        "gold",
        PARAM_TYPE_INT,
        [](void* object) { return static_cast<Unit*>(object)->gold; },
        [](const Arguments& arguments) { unitIn<Unit>(arguments).gold = arguments[1].getInt(); });
    field(
        *type,
        "isHostile",
        PARAM_TYPE_BOOL,
        [](void* object) { return static_cast<Unit*>(object)->isHostile; },
        [](const Arguments& arguments)
        { unitIn<Unit>(arguments).isHostile = arguments[1].getBool(); });
    field(
        *type,
        "isHidden",
        PARAM_TYPE_BOOL,
        [](void* object) { return static_cast<Unit*>(object)->isHidden; },
        [](const Arguments& arguments)
        { unitIn<Unit>(arguments).isHidden = arguments[1].getBool(); });
}

// [/each]

} // namespace

void bindUnitsInLibrary(Environment& environment)
{
    // [each]
    bindUnit0(environment);
    // [/each]
}
