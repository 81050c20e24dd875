-- brains.lua
-- What each unit does in a tick.

local REACH = 1.5
local STEP = 0.75
local WEAK = 20

local function rest(id)
    shield(id, true)
    return "rest", 0, 0
end

local function strike(foe)
    damage(foe, roll(3, 9))
    return "strike", 0, 0
end

-- Called by the host for every living unit; returns an action and a step.
function decide(id, x, y, hitPoints)
    count("decisions")
    local foe = nearestFoe(id)
    if foe == 0 or hitPoints < WEAK and roll(1, 3) == 1 then
        return rest(id)
    end

    shield(id, false)
    local dx, dy = positionX(foe) - x, positionY(foe) - y
    local distance = math.sqrt(dx * dx + dy * dy)
    if distance <= REACH then
        return strike(foe)
    end
    dx, dy = dx / distance * STEP, dy / distance * STEP
    count("walked", math.sqrt(dx * dx + dy * dy))
    return "move", dx, dy
end
