-- sky.lua
world.sky.rain()
print("clouds at " .. world.sky.height)
