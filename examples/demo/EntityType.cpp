#include "demo/EntityType.h"

#include "demo/Binding.h"
#include "demo/VecType.h"

#include <functional>
#include <string>
#include <utility>

namespace demo
{

namespace
{

using tbScripts::BUILT_IN_FUNCTION;
using tbScripts::FunctionParameter;
using tbScripts::UserType;

using tbScripts::PARAM_TYPE_BOOL;
using tbScripts::PARAM_TYPE_INT;
using tbScripts::PARAM_TYPE_STRING;
using tbScripts::PARAM_TYPE_USER_TYPE;

// Scripts can read the field. What they write to a field without setter is dropped.
template <typename Read>
void declareReadable(UserType& type, const char* name, Read read)
{
    tbScripts::UserTypeFieldDescriptor field;
    field.name = name;
    field.getter = [read](void* object)
    { return FunctionParameter(read(*static_cast<const Entity*>(object))); };
    type.setField(field);
}

// Scripts can read the field and write values of the expected kind.
template <typename Read>
void declareWritable(
    UserType& type,
    const char* name,
    const Expected& expected,
    Read read,
    std::function<void(Entity&, const FunctionParameter&)> write)
{
    declareReadable(type, name, read);
    tbScripts::UserTypeFieldDescriptor field;
    field.name = name;
    field.type = expected.kind;
    field.userTypeName = expected.typeName;
    field.setter = [write = std::move(write)](const Parameters& arguments)
    { write(entityIn(arguments[0]), arguments[1]); };
    type.setField(field);
}

void declareFields(UserType& type, Arena& arena, VecStore& vecs)
{
    using E = const Entity&;
    declareReadable(type, "id", [](E entity) { return entity.id; });
    declareReadable(type, "kind", [](E entity) { return nameOf(entity.kind); });
    declareReadable(type, "hitPoints", [](E entity) { return entity.hitPoints; });
    declareReadable(type, "x", [](E entity) { return entity.position.x; });
    declareReadable(type, "y", [](E entity) { return entity.position.y; });
    declareWritable(
        type,
        "name",
        PARAM_TYPE_STRING,
        [](E entity) { return tbMemory::StringView(entity.name); },
        [](Entity& entity, const FunctionParameter& value) { entity.name = textOf(value); });
    declareWritable(
        type,
        "isShielded",
        PARAM_TYPE_BOOL,
        [](E entity) { return entity.isShielded; },
        [](Entity& entity, const FunctionParameter& value)
        { entity.isShielded = value.getBool(); });
    // A copy: the vector is the script's, and changing it moves nobody.
    declareWritable(
        type,
        "position",
        {PARAM_TYPE_USER_TYPE, VEC_TYPE},
        [&vecs](E entity) { return newVec(vecs, entity.position); },
        [&arena, &vecs](Entity& entity, const FunctionParameter& value)
        { arena.place(entity, vecIn(vecs, value)); });
}

void declareMethods(UserType& type, Arena& arena)
{
    define(
        type.setMethod("isAlive", false),
        {},
        [](const Parameters& arguments) { return isAlive(entityIn(arguments[0])); });
    define(
        type.setMethod("hurt", false),
        {PARAM_TYPE_INT},
        [&arena](const Parameters& arguments)
        { return arena.hurt(entityIn(arguments[0]), arguments[1].getInt()); });
}

void declareOperators(UserType& type)
{
    define(
        type.setOperator(BUILT_IN_FUNCTION::TOSTRING),
        {},
        [](const Parameters& operands)
        {
            const Entity& entity = entityIn(operands[0]);
            const std::string text = std::string(nameOf(entity.kind)) + ' ' + entity.name;
            return FunctionParameter(text);
        });
    // Each time the host passes an entity, the script gets a new instance. EQ compares two
    // instances by their entities; as keys of a table they still differ.
    define(
        type.setOperator(BUILT_IN_FUNCTION::EQ),
        {},
        [](const Parameters& operands)
        { return &entityIn(operands[0]) == &entityIn(operands[1]); });
}

} // namespace

void declareEntity(tbScripts::Environment& environment, Arena& arena, VecStore& vecs)
{
    UserType* const type = environment.setUserType(ENTITY_TYPE);
    if (!type)
        return;
    declareFields(*type, arena, vecs);
    declareMethods(*type, arena);
    declareOperators(*type);
}

FunctionParameter toScript(Entity* entity)
{
    constexpr bool IS_OWNED_BY_SCRIPT = false;
    return FunctionParameter(entity, ENTITY_TYPE, IS_OWNED_BY_SCRIPT);
}

Entity& entityIn(const FunctionParameter& parameter)
{
    auto* const entity = static_cast<Entity*>(parameter.getUserTypeObject());
    if (!entity)
        throw std::string("expected an Entity, got nil");
    return *entity;
}

} // namespace demo
