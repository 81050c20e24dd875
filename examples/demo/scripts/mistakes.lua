-- mistakes.lua
-- Three mistakes on purpose. Each is reported with its line and ends only the call in which it happens.

plannedMistakes = 3

schedule(120, function()
    count("timers")
    local champion -- nobody has set it
    log("hail to " .. champion.name)
end)

schedule(170, function()
    count("timers")
    world.field.find(1).position = "next to the gate"
end)

schedule(220, function()
    count("timers")
    world.field.find(1):hurt("a lot")
end)
