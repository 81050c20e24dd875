-- mistakes.lua
-- Two mistakes on purpose. Each is reported with its line and ends only the call that it is in.

plannedMistakes = 2

schedule(120, function()
    count("timers")
    local champion -- nobody has set it
    log("hail to unit " .. champion.id)
end)

schedule(220, function()
    count("timers")
    damage("the big one", 5)
end)
