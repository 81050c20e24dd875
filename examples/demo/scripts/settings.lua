-- settings.lua
-- The rules of the match. Nothing here becomes a global: the host keeps the table, and passes it to
-- begin() and report() in waves.lua.

configure({
    width = 60,
    height = 20,
    guards = 7,
    waves = 6,
    raidersPerWave = 4,
    ticksBetweenWaves = 45,
})
