// The same twenty host functions, bound by their types. A source that only binds needs no other
// header.

#include "Game.h"

#include <tbScripts/Bind.h>

namespace
{

double heightOf(int entity)
{
    return bench::positionOf(entity).y;
}

} // namespace

void bindGameByType(tbScripts::Environment& environment)
{
    using tbScripts::bind;
    bind<&bench::spawn>(environment, "spawn");
    bind<&bench::despawn>(environment, "despawn");
    bind<&bench::exists>(environment, "exists");
    bind<&bench::countEntities>(environment, "countEntities");
    bind<&bench::nameOf>(environment, "nameOf");
    bind<&bench::rename>(environment, "rename");
    bind<&bench::lifeOf>(environment, "lifeOf");
    bind<&bench::setLife>(environment, "setLife");
    bind<&bench::heal>(environment, "heal");
    bind<&bench::isHostile>(environment, "isHostile");
    bind<&heightOf>(environment, "heightOf");
    bind<&bench::moveTo>(environment, "moveTo");
    bind<&bench::distance>(environment, "distance");
    bind<&bench::nearest>(environment, "nearest");
    bind<&bench::say>(environment, "say");
    bind<&bench::play>(environment, "play");
    bind<&bench::setWeather>(environment, "setWeather");
    bind<&bench::timeOfDay>(environment, "timeOfDay");
    bind<&bench::random>(environment, "random");
    bind<&bench::translate>(environment, "translate");
}
