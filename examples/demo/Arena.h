#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace demo
{

enum class KIND
{
    GUARD,
    RAIDER
};

struct Unit
{
    int id;
    KIND kind;
    double x;
    double y;
    int hitPoints;
    bool isShielded;
};

/// Something that scripts may want to hear about: what happened, to which unit, and how much.
struct Event
{
    std::string name;
    int unitId;
    int amount;
};

/// What the arena counts. The scripts count the same, and in the end both are compared.
struct Totals
{
    int spawned = 0;
    int hits = 0;
    int damage = 0;
    int raidersFallen = 0;
    int guardsFallen = 0;
    std::int64_t randomSum = 0;
    double walked = 0.0;
};

/// The world of the demo, as a game would have it: it knows nothing of scripts.
///
/// Every run is the same: positions need nothing but square roots, and chance is a small generator
/// of our own with a fixed seed.
class Arena
{
public:
    /// Sets the size of the field; units are kept inside.
    void resize(double width, double height);

    /// Returns the new unit's id; ids begin at 1.
    int spawn(KIND kind, double x, double y);

    /// Hurts a unit, a shielded one half as much. Returns what it lost, 0 if it does not live.
    int damage(int id, int amount);

    void setShielded(int id, bool isShielded);
    void move(int id, double dx, double dy);
    void rest(int id);

    bool isAlive(int id) const;

    /// Returns null for an id that was never given out. Valid until: the next `spawn`.
    const Unit* find(int id) const;

    /// Returns the nearest living unit of the other kind, 0 if there is none.
    int nearestFoe(int id) const;

    /// Returns a number from `lowest` to `highest`; `lowest` if they are in the wrong order.
    int random(int lowest, int highest);

    int countAlive(KIND kind) const;

    /// Returns how many units there ever were, which is the highest id.
    int getUnitCount() const;

    const Totals& getTotals() const;

    /// Returns what has happened since the last time.
    std::vector<Event> takeEvents();

private:
    Unit* _findAlive(int id);

    std::vector<Unit> m_units; // at index id - 1; the fallen stay
    std::vector<Event> m_events;
    Totals m_totals;
    double m_width = 1.0;
    double m_height = 1.0;
    std::uint32_t m_randomState = 20240229;
};

} // namespace demo
