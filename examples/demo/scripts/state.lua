-- state.lua
-- What the scripts know of the world, as one table that can leave this environment.

local Vec = world.types.Vec

-- Units are the host's, so they can be held from the beginning to the end.
local units = {}

onEvent("spawned", function(unit) units[unit.id] = unit end)

-- The host calls this every hundred ticks and turns the table into bytes. The environment that reads
-- the bytes owns the vectors in the table. So each vector here is created for the table and stored
-- nowhere else: reading unit.position creates a new one every time.
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
