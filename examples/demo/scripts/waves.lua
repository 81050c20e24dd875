-- waves.lua
-- When the raiders come, and from where.

local wavesStarted = 0

local function startWave(settings)
    wavesStarted = wavesStarted + 1
    log("wave " .. wavesStarted .. " of " .. settings.waves)
    for _ = 1, settings.raidersPerWave do
        spawn("raider", settings.width, roll(0, settings.height))
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
    log(lastTick .. " ticks, " .. settings.guards .. " guards at the gate")
    for guard = 1, settings.guards do
        spawn("guard", 5, settings.height * guard / (settings.guards + 1))
    end
    startWave(settings)

    -- An error of a host function can be caught like any other; it is logged all the same.
    local isDone, message = pcall(spawn, "dragon", 1, 1)
    log("pcall gave: " .. tostring(isDone) .. ", " .. message)
end

-- Called by the host in the end, with the same table.
function report(settings)
    local held = tally("guardsFallen") < settings.guards
    return ("the gate %s after %d of %d waves"):format(
        held and "holds" or "is lost", wavesStarted, settings.waves)
end
