-- waves.lua
-- When the raiders come, and from where.

local Vec = world.types.Vec
local field = world.field

local wavesStarted = 0

-- The host owns the unit; a script may hold it until the end of the match.
local function place(kind, name, position)
    local unit = field.spawn(kind)
    unit.name = name
    unit.position = position
end

local function startWave(settings)
    wavesStarted = wavesStarted + 1
    log("wave " .. wavesStarted .. " of " .. settings.waves)
    for number = 1, settings.raidersPerWave do
        local name = wavesStarted .. "/" .. number
        place("raider", name, Vec.of(field.width, roll(0, field.height)))
    end
    if wavesStarted < settings.waves then
        schedule(settings.ticksBetweenWaves, function()
            count("timers")
            startWave(settings)
        end)
    end
end

-- Called by the host once, with the table that settings.lua has given it.
function begin(settings)
    log(world.lastTick .. " ticks, " .. settings.guards .. " guards at the gate")
    local post = Vec.of(5, 0)
    local gap = Vec.of(0, field.height / (settings.guards + 1))
    for number = 1, settings.guards do
        post = post + gap
        place("guard", "number " .. number, post)
    end
    startWave(settings)

    -- An error of a host function can be caught like any other; it is logged all the same.
    local isDone, message = pcall(field.spawn, "dragon")
    log("pcall gave: " .. tostring(isDone) .. ", " .. message)
end

-- Called by the host in the end, with the same table.
function report(settings)
    local held = tally("guardsFallen") < settings.guards
    return ("the gate %s after %d of %d waves, the last to fall was %s"):format(
        held and "holds" or "is lost", wavesStarted, settings.waves, tostring(field.lastToFall))
end
