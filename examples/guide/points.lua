-- points.lua
local a = Point.of(3, 4)
a.x = a.x + 1
print(a.x, a[2])

local b = a:scaled(2)
print(b == Point.of(8, 8), a == b)

walkTo(b)

function nextStop(from)
    return from:scaled(10)
end
