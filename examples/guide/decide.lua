-- decide.lua
function decide(unit, distance, isAlarmed)
    if isAlarmed and distance < 2 then
        return "move", distance, 0.5, "the host asks for three results, not for this one"
    end
    return "rest"
end

local calls = 0

onEvent(function(name)
    calls = calls + 1
    print(name .. ", call " .. calls)
end)
