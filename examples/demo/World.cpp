#include "demo/World.h"

#include "demo/Binding.h"
#include "demo/EntityType.h"
#include "demo/VecType.h"

#include <tbScripts/Namespace.h>

namespace demo
{

namespace
{

using tbScripts::Namespace;

using tbScripts::PARAM_TYPE_INT;
using tbScripts::PARAM_TYPE_STRING;
using tbScripts::PARAM_TYPE_USER_TYPE;

void declareField(Namespace& field, Arena& arena)
{
    define(
        field.setFunction("spawn"),
        {PARAM_TYPE_STRING},
        [&arena](const Parameters& arguments)
        {
            const tbMemory::StringView kind = arguments[0].getString();
            // A string that a callable throws becomes an error of the calling script.
            if (kind != "guard" && kind != "raider")
                throw "spawn knows guards and raiders, but no " + textOf(arguments[0]);
            return toScript(&arena.spawn(kind == "guard" ? KIND::GUARD : KIND::RAIDER));
        });
    define(
        field.setFunction("find"),
        {PARAM_TYPE_INT},
        [&arena](const Parameters& arguments)
        { return toScript(arena.find(arguments[0].getInt())); });
    define(
        field.setFunction("nearestFoe"),
        {{PARAM_TYPE_USER_TYPE, ENTITY_TYPE}},
        [&arena](const Parameters& arguments)
        { return toScript(arena.nearestFoe(entityIn(arguments[0]))); });
}

void declareChance(Namespace& chance, Arena& arena)
{
    define(
        chance.setFunction("random"),
        {PARAM_TYPE_INT, PARAM_TYPE_INT},
        [&arena](const Parameters& arguments)
        { return arena.random(arguments[0].getInt(), arguments[1].getInt()); });
}

} // namespace

// A qualified name names one namespace after the other; the library declares those that are
// missing.
void declareWorld(tbScripts::Environment& environment, Arena& arena, VecStore& vecs)
{
    declareVec(environment, vecs);
    declareEntity(environment, arena, vecs);
    if (Namespace* const field = environment.setNamespace("world::field"))
        declareField(*field, arena);
    if (Namespace* const chance = environment.setNamespace("world::chance"))
        declareChance(*chance, arena);
}

} // namespace demo
