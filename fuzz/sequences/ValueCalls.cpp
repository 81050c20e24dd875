// Calls that copy, move, assign and drop parameters, references and views.

#include "sequences/World.h"
#include "support/Require.h"

#include <utility>

namespace tbScripts::fuzz
{

namespace
{

void copyReference(World& world)
{
    world.trace("copy reference");
    const ScriptObjectReference& source = world.anyReference();
    const std::uint32_t count = source.getUseCount();
    {
        const ScriptObjectReference copy(source);
        const bool isEmpty = copy.getInterpreterReference() == nullptr;
        require(isEmpty || copy.getUseCount() == count + 1, "a copy is counted");
    }
    require(source.getUseCount() == count, "the end of a copy is counted");
}

void assignReference(World& world)
{
    world.trace("assign reference");
    ScriptObjectReference& target = world.anyReference();
    ScriptObjectReference& source = world.anyReference();
    if (world.bytes().flag())
        target = source;
    else
        target = std::move(source);
}

void dropReference(World& world)
{
    world.trace("drop reference");
    world.anyReference() = ScriptObjectReference();
}

void useView(World& world)
{
    world.trace("use view");
    if (world.views().empty())
        return;
    ScriptObjectView& view = world.views()[world.bytes().below(world.views().size())];
    switch (world.bytes().choice<8>(4))
    {
    case 0:
        world.anyReference() = view;
        break;
    case 1:
        world.anyReference() = ScriptObjectReference(view);
        break;
    case 2:
        view = ScriptObjectView();
        break;
    default:
        view = ScriptObjectView(world.views().front());
        break;
    }
}

void copyParameter(World& world)
{
    world.trace("copy parameter");
    FunctionParameter& target = world.anyParameter();
    FunctionParameter& source = world.anyParameter();
    switch (world.bytes().choice<8>(4))
    {
    case 0:
        target = source;
        break;
    case 1:
        target = std::move(source);
        break;
    case 2:
        target = FunctionParameter(source);
        break;
    default:
        target = source.getDeclaration();
        break;
    }
}

void makeParameter(World& world)
{
    world.trace("make parameter");
    FunctionParameter made = world.anyValue();
    world.anyParameter() = std::move(made);
}

void prepareParameter(World& world)
{
    world.trace("prepare parameter");
    FunctionParameter& parameter = world.anyParameter();
    const FUNCTION_PARAMETER_TYPE type = parameter.getType();
    switch (world.bytes().choice<8>(4))
    {
    case 0:
        parameter.prepareForInternalType();
        break;
    case 1:
        parameter.prepareForString();
        break;
    case 2:
        parameter.prepareForUserType();
        break;
    default:
        parameter.prepareForScriptObjectReference();
        break;
    }
    require(parameter.getType() == type, "preparing does not change the kind");
}

void readParameter(World& world)
{
    world.trace("read parameter");
    const FunctionParameter& parameter = world.anyParameter();
    parameter.getBool();
    parameter.getInt();
    parameter.getFloat();
    parameter.getDouble();
    void* const object = parameter.getUserTypeObject();
    require(!object || world.objects().contains(object), "only objects of the host are seen");
    require(
        parameter.getString().isNull() || parameter.getType() == PARAM_TYPE_STRING,
        "only a text has a text");
    world.anyReference() = parameter.getScriptObject();
}

} // namespace

void performValueCall(World& world)
{
    constexpr auto CALLS = makeCases<16, Call>(
        {{0, &copyReference},
         {1, &assignReference},
         {2, &dropReference},
         {3, &useView},
         {4, &copyParameter},
         {5, &makeParameter},
         {6, &prepareParameter},
         {7, &readParameter}});
    world.bytes().caseOf(CALLS)(world);
}

} // namespace tbScripts::fuzz
