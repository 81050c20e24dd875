-- tally.lua
-- The scripts' own bookkeeping. The host counts the same things on its side and compares.

local totals = { raidersFallen = 0, guardsFallen = 0 }

function count(what, amount)
    totals[what] = (totals[what] or 0) + (amount or 1)
end

-- A number from lowest to highest, counted.
function roll(lowest, highest)
    local number = world.chance.random(lowest, highest)
    count("random", number)
    return number
end

-- Called by the host after every tick.
function score()
    return totals.raidersFallen, totals.guardsFallen
end

-- Called by the host for its summary.
function tally(what)
    return totals[what] or 0
end

onEvent("spawned", function() count("spawned") end)

onEvent("hit", function(unit, amount)
    count("hits")
    count("damage", amount)
end)

onEvent("raiderFell", function() count("raidersFallen") end)

onEvent("guardFell", function(unit)
    count("guardsFallen")
    log(tostring(unit) .. " has fallen at " .. tostring(unit.position))
end)
