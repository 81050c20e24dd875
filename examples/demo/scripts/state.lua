-- state.lua
-- What the scripts know of the world, as one table that can leave this environment.

local Vec = world.types.Vec

-- Units are the host's, so they can be held from the beginning to the end.
local units = {}

onEvent("spawned", function(unit) units[unit.id] = unit end)

-- Called by the host every hundred ticks. It turns the table into bytes, and whoever reads those
-- owns the vectors in it from then on. So each vector here is made for the table, and is kept
-- nowhere else: reading unit.position gives a new one every time.
function state()
    count("states")
    local known = {
        title = "after " .. world.tick .. " ticks",
        tick = world.tick,
        score = { raidersFallen = tally("raidersFallen"), guardsFallen = tally("guardsFallen") },
        units = {},
        sumOfPositions = Vec.new(),
    }
    count("vectorsInStates")
    for _, unit in ipairs(units) do
        if unit:isAlive() then
            known.sumOfPositions:add(unit.position)
            table.insert(known.units, {
                id = unit.id,
                name = unit.name,
                hitPoints = unit.hitPoints,
                isShielded = unit.isShielded,
                position = unit.position,
            })
            count("vectorsInStates")
        end
    end
    return known
end
