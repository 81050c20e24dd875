#include "demo/Arena.h"

#include <algorithm>
#include <utility>

namespace demo
{

namespace
{

constexpr int FULL_HIT_POINTS = 60;

} // namespace

void Arena::resize(const Vec& size)
{
    m_size = {std::max(size.x, 1.0), std::max(size.y, 1.0)};
}

Entity& Arena::spawn(KIND kind)
{
    const int id = countEntities() + 1;
    m_entities.push_back({id, kind, nameOf(kind), Vec(), FULL_HIT_POINTS, false});
    Entity& entity = m_entities.back();
    m_events.push_back({"spawned", &entity, FULL_HIT_POINTS});
    ++m_totals.spawned;
    return entity;
}

void Arena::place(Entity& entity, const Vec& position)
{
    if (!isAlive(entity))
        return;
    entity.position.x = std::clamp(position.x, 0.0, m_size.x);
    entity.position.y = std::clamp(position.y, 0.0, m_size.y);
}

void Arena::walk(Entity& entity, const Vec& step)
{
    if (!isAlive(entity))
        return;
    place(entity, entity.position + step);
    m_totals.walked += length(step);
}

void Arena::rest(Entity& entity)
{
    if (isAlive(entity))
        entity.hitPoints = std::min(entity.hitPoints + 1, FULL_HIT_POINTS);
}

int Arena::hurt(Entity& entity, int amount)
{
    if (!isAlive(entity) || amount <= 0)
        return 0;
    const int felt = entity.isShielded ? amount / 2 + amount % 2 : amount;
    const int lost = std::min(felt, entity.hitPoints);
    entity.hitPoints -= lost;
    ++m_totals.hits;
    m_totals.damage += lost;
    m_events.push_back({"hit", &entity, lost});
    if (isAlive(entity))
        return lost;

    const bool isRaider = entity.kind == KIND::RAIDER;
    ++(isRaider ? m_totals.raidersFallen : m_totals.guardsFallen);
    m_events.push_back({isRaider ? "raiderFell" : "guardFell", &entity, 0});
    return lost;
}

Entity* Arena::find(int id)
{
    if (id < 1 || id > countEntities())
        return nullptr;
    return &m_entities[static_cast<std::size_t>(id - 1)];
}

Entity* Arena::nearestFoe(const Entity& entity)
{
    Entity* nearest = nullptr;
    double leastDistance = 0.0;
    for (Entity& other : m_entities)
    {
        if (other.kind == entity.kind || !isAlive(other))
            continue;
        const double distance = length(other.position - entity.position);
        if (nearest && distance >= leastDistance)
            continue;
        nearest = &other;
        leastDistance = distance;
    }
    return nearest;
}

int Arena::random(int lowest, int highest)
{
    if (highest <= lowest)
        return lowest;
    m_randomState = m_randomState * 1664525U + 1013904223U;
    const std::uint32_t range =
        static_cast<std::uint32_t>(highest) - static_cast<std::uint32_t>(lowest) + 1U;
    const std::uint32_t drawn = range == 0 ? m_randomState : (m_randomState >> 8U) % range;
    const int number = static_cast<int>(static_cast<std::uint32_t>(lowest) + drawn);
    m_totals.randomSum += number;
    return number;
}

int Arena::countAlive(KIND kind) const
{
    return static_cast<int>(std::count_if(
        m_entities.begin(),
        m_entities.end(),
        [kind](const Entity& entity) { return entity.kind == kind && isAlive(entity); }));
}

int Arena::countEntities() const
{
    return static_cast<int>(m_entities.size());
}

const Totals& Arena::getTotals() const
{
    return m_totals;
}

std::vector<Event> Arena::takeEvents()
{
    return std::exchange(m_events, {});
}

bool isAlive(const Entity& entity)
{
    return entity.hitPoints > 0;
}

const char* nameOf(KIND kind)
{
    return kind == KIND::GUARD ? "guard" : "raider";
}

} // namespace demo
