-- compare.lua
-- Runs in an environment of its own. All it knows of the match is the state that the host has
-- restored here; it compares that with the arena itself.

local Vec = world.types.Vec

local differences

local function expect(isSo, what)
    if not isSo then
        table.insert(differences, what)
    end
end

local function compareUnit(record)
    local unit = world.field.find(record.id)
    local position = record.position -- a vector like any other, with all that its type has
    local isThere = position == unit.position
        and position[1] == unit.x and position[2] == unit.y
        and (-position + unit.position):length() == 0
    local who = tostring(unit)
    expect(isThere, who .. " from " .. (position .. unit.position))
    expect(record.name == unit.name, "name of " .. who)
    expect(record.hitPoints == unit.hitPoints, "hit points of " .. who)
    expect(record.isShielded == unit.isShielded, "shield of " .. who)
end

local function countEntries(object)
    local entries = 0
    for _, value in pairs(object) do
        entries = entries + 1 + (type(value) == "table" and countEntries(value) or 0)
    end
    return entries
end

-- Called by the host, which adds what it knows itself; returns how many entries and units the state
-- has, and what is different.
function compare(state, tick, raidersFallen, guardsFallen)
    differences = {}
    expect(state.tick == tick, "tick")
    expect(state.title == "after " .. tick .. " ticks", "title")
    expect(state.score.raidersFallen == raidersFallen, "fallen raiders")
    expect(state.score.guardsFallen == guardsFallen, "fallen guards")

    local sum = Vec.new()
    for _, record in ipairs(state.units) do
        compareUnit(record)
        sum:add(record.position)
    end
    expect(state.sumOfPositions == sum, "sum of the positions")
    local text = #differences > 0 and "different are " .. table.concat(differences, ", ") or ""
    return countEntries(state), #state.units, text
end
