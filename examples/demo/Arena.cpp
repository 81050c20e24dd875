#include "demo/Arena.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace demo
{

namespace
{

constexpr int FULL_HIT_POINTS = 60;

double squaredDistance(const Unit& a, const Unit& b)
{
    return (a.x - b.x) * (a.x - b.x) + (a.y - b.y) * (a.y - b.y);
}

} // namespace

void Arena::resize(double width, double height)
{
    m_width = std::max(width, 1.0);
    m_height = std::max(height, 1.0);
}

int Arena::spawn(KIND kind, double x, double y)
{
    const int id = getUnitCount() + 1;
    const double insideX = std::clamp(x, 0.0, m_width);
    const double insideY = std::clamp(y, 0.0, m_height);
    m_units.push_back({id, kind, insideX, insideY, FULL_HIT_POINTS, false});
    m_events.push_back({"spawned", id, FULL_HIT_POINTS});
    ++m_totals.spawned;
    return id;
}

int Arena::damage(int id, int amount)
{
    Unit* const unit = _findAlive(id);
    if (!unit || amount <= 0)
        return 0;
    const int lost = std::min(unit->isShielded ? amount / 2 + amount % 2 : amount, unit->hitPoints);
    unit->hitPoints -= lost;
    ++m_totals.hits;
    m_totals.damage += lost;
    m_events.push_back({"hit", id, lost});
    if (unit->hitPoints > 0)
        return lost;

    const bool isRaider = unit->kind == KIND::RAIDER;
    ++(isRaider ? m_totals.raidersFallen : m_totals.guardsFallen);
    m_events.push_back({isRaider ? "raiderFell" : "guardFell", id, 0});
    return lost;
}

void Arena::setShielded(int id, bool isShielded)
{
    if (Unit* const unit = _findAlive(id))
        unit->isShielded = isShielded;
}

void Arena::move(int id, double dx, double dy)
{
    Unit* const unit = _findAlive(id);
    if (!unit)
        return;
    unit->x = std::clamp(unit->x + dx, 0.0, m_width);
    unit->y = std::clamp(unit->y + dy, 0.0, m_height);
    m_totals.walked += std::sqrt(dx * dx + dy * dy);
}

void Arena::rest(int id)
{
    if (Unit* const unit = _findAlive(id))
        unit->hitPoints = std::min(unit->hitPoints + 1, FULL_HIT_POINTS);
}

bool Arena::isAlive(int id) const
{
    const Unit* const unit = find(id);
    return unit && unit->hitPoints > 0;
}

const Unit* Arena::find(int id) const
{
    if (id < 1 || id > getUnitCount())
        return nullptr;
    return &m_units[static_cast<std::size_t>(id - 1)];
}

int Arena::nearestFoe(int id) const
{
    const Unit* const self = find(id);
    const Unit* nearest = nullptr;
    for (const Unit& unit : m_units)
    {
        if (!self || unit.kind == self->kind || unit.hitPoints <= 0)
            continue;
        if (!nearest || squaredDistance(*self, unit) < squaredDistance(*self, *nearest))
            nearest = &unit;
    }
    return nearest ? nearest->id : 0;
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
        m_units.begin(),
        m_units.end(),
        [kind](const Unit& unit) { return unit.kind == kind && unit.hitPoints > 0; }));
}

int Arena::getUnitCount() const
{
    return static_cast<int>(m_units.size());
}

const Totals& Arena::getTotals() const
{
    return m_totals;
}

std::vector<Event> Arena::takeEvents()
{
    return std::exchange(m_events, {});
}

Unit* Arena::_findAlive(int id)
{
    return isAlive(id) ? &m_units[static_cast<std::size_t>(id - 1)] : nullptr;
}

} // namespace demo
