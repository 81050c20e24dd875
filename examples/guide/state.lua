-- state.lua
local visits = {gate = 3, tower = 1}

function getState()
    return {visits = visits, greet = function() return "hello" end, [true] = "lost"}
end

function describe(state)
    return state.visits.gate, state.visits ~= visits, type(state.greet)
end
