-- patrol.lua
position = 0

function patrol(distance)
    position = position + distance
    return position
end
