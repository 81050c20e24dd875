// The same classes, bound by their types. A source that only binds needs no other header.

#include "Units.h"

#include <tbScripts/Bind.h>

namespace
{

using namespace tbScripts;

// [each]
void bindUnit0(Environment& environment)
{
    using Unit = bench::Unit0;
    bindType<Unit>(environment, "Unit0")
        .constructor<>()
        .method<&Unit::hurt>("hurt")
        .method<&Unit::heal>("heal")
        .method<&Unit::isAlive>("isAlive")
        .method<&Unit::distanceTo>("distanceTo")
        .method<&Unit::moveTo>("moveTo")
        .method<&Unit::countItems>("countItems")
        .method<&Unit::addItem>("addItem")
        .method<&Unit::hasItem>("hasItem")
        .method<&Unit::getName>("getName")
        .method<&Unit::setName>("setName")
        .method<&Unit::say>("say")
        .method<&Unit::damageAgainst>("damageAgainst")
        .method<&Unit::wait>("wait")
        .method<&Unit::stop>("stop")
        .method<&Unit::rankAmong>("rankAmong")
        .method<&Unit::canSee>("canSee")
        .method<&Unit::rename>("rename")
        .field<&Unit::health>("health")
        .field<&Unit::speed>("speed")
        .field<&Unit::x>("x")
        .field<&Unit::y>("y")
        .field<&Unit::level>("level")
        .field<&Unit::gold>("gold")
        .field<&Unit::isHostile>("isHostile")
        .field<&Unit::isHidden>("isHidden");
}

// [/each]

} // namespace

void bindUnitsByType(Environment& environment)
{
    // [each]
    bindUnit0(environment);
    // [/each]
}
