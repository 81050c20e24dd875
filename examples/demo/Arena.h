#pragma once

#include "demo/Vec.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace demo
{

enum class KIND
{
    GUARD,
    RAIDER
};

/// A unit of the arena.
struct Entity
{
    int id;
    KIND kind;
    std::string name;
    Vec position;
    int hitPoints;
    bool isShielded;
};

/// An event for the callbacks of scripts: what happened, to whom, and how much.
struct Event
{
    std::string name;
    Entity* entity;
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
/// Entities keep their addresses until the arena is destroyed, the fallen too, so scripts can hold
/// them. Every run is the same: positions need only square roots, and chance is a small generator
/// with a fixed seed.
class Arena
{
public:
    /// Sets the size of the field; entities are kept inside.
    void resize(const Vec& size);

    /// Adds an entity, which stands in the corner until it is placed. Ids begin at 1.
    ///
    /// Valid until: the arena is destroyed, as with every entity that it returns.
    Entity& spawn(KIND kind);

    /// Puts a living entity somewhere else.
    void place(Entity& entity, const Vec& position);

    /// Moves a living entity by one step, which counts as walked.
    void walk(Entity& entity, const Vec& step);

    void rest(Entity& entity);

    /// Hurts an entity, a shielded one half as much. Returns what it lost, 0 if it does not live.
    int hurt(Entity& entity, int amount);

    /// Returns null for an id that was never given out.
    Entity* find(int id);

    /// Returns the nearest living entity of the other kind, null if there is none.
    Entity* nearestFoe(const Entity& entity);

    /// Returns a number from `lowest` to `highest`; `lowest` if they are in the wrong order.
    int random(int lowest, int highest);

    int countAlive(KIND kind) const;

    /// Returns how many entities there ever were, which is the highest id.
    int countEntities() const;

    const Totals& getTotals() const;

    /// Returns what has happened since the last time.
    std::vector<Event> takeEvents();

private:
    std::deque<Entity> m_entities; // at index id - 1; a deque that grows moves none of them
    std::vector<Event> m_events;
    Totals m_totals;
    Vec m_size{1.0, 1.0};
    std::uint32_t m_randomState = 20240229;
};

bool isAlive(const Entity& entity);

const char* nameOf(KIND kind);

} // namespace demo
