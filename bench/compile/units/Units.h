#pragma once

// The host behind the bindings of classes. The benchmark repeats what stands between the marks,
// with another number in place of that of `Unit0`. Nothing of it is linked.

#include <string>
#include <string_view>

namespace bench
{

// [each]
struct Unit0
{
    double health;
    double speed;
    double x;
    double y;
    int level;
    int gold;
    bool isHostile;
    bool isHidden;

    void hurt(double amount);
    void heal(double amount);
    bool isAlive() const;
    double distanceTo(double toX, double toY) const;
    void moveTo(double toX, double toY);
    int countItems() const;
    void addItem(int item, int count);
    bool hasItem(int item) const;
    std::string getName() const;
    void setName(std::string_view name);
    void say(std::string_view text);
    double damageAgainst(int armour, bool isMagic) const;
    void wait(double seconds);
    void stop();
    int rankAmong(int team) const;
    bool canSee(double toX, double toY, double range) const;
    void rename(std::string_view name, bool isShort);
};

// [/each]

} // namespace bench
