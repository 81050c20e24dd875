-- brains.lua
-- What each unit does in a tick.

local Vec = world.types.Vec

local REACH = Vec.of(1.5, 0) -- vectors are ordered by their lengths
local STEP = 0.75
local WEAK = 20

local function strike(unit, foe)
    -- The library creates a new instance for each result. Two of them are equal if the unit is the same.
    local isSeen = world.field.nearestFoe(foe) == unit
    foe:hurt(isSeen and roll(3, 9) or roll(4, 10))
    return "strike"
end

local function move(step)
    count("walked", step:length())
    return "move", step
end

-- Called by the host for every living unit; returns an action, and a step for those who move.
function decide(unit)
    count("decisions")
    local foe = world.field.nearestFoe(unit)
    local isTired = unit.hitPoints < WEAK and roll(1, 3) == 1
    unit.isShielded = isTired or not foe
    if unit.isShielded then
        return "rest"
    end

    local way = foe.position - unit.position
    if way <= REACH then
        return strike(unit, foe)
    end
    return move(way:normalised():scaled(STEP))
end
