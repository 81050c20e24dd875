#pragma once

// The host behind both bindings: twenty operations that scripts may call. Nothing of it is linked.

#include <string>
#include <string_view>

namespace bench
{

struct Point
{
    double x;
    double y;
};

int spawn(std::string_view kind);
void despawn(int entity);
bool exists(int entity);
int countEntities();
std::string nameOf(int entity);
void rename(int entity, std::string_view name);
double lifeOf(int entity);
void setLife(int entity, double life);
void heal(int entity, double amount);
bool isHostile(int entity, int other);
Point positionOf(int entity);
void moveTo(int entity, double x, double y);
double distance(int entity, int other);
int nearest(int entity, double radius);
void say(int entity, std::string_view text);
void play(std::string_view sound, double volume);
void setWeather(std::string_view weather, double strength, bool isSudden);
double timeOfDay();
int random(int least, int most);
std::string translate(std::string_view key);

} // namespace bench
