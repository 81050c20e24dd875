# Runs the example host: on its own scripts, and on copies with one thing changed.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
set(problems "")

# expect_run(<folder> <exit status> <text of the output>...)
# Several spaces in the output count as one.
function(expect_run folder status)
    get_filename_component(name ${folder} NAME)
    set(list ${scratch}/${name}_scripts.tbscripts)
    file(MAKE_DIRECTORY ${scratch})
    execute_process(COMMAND ${tool} pack ${folder} -o ${list} OUTPUT_QUIET ERROR_QUIET)
    execute_process(
        COMMAND ${demo} ${list}
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT result STREQUAL status)
        string(APPEND problems "${folder}: wanted status ${status}, got ${result}:\n${output}\n")
    endif()
    string(REGEX REPLACE " +" " " output "${output}")
    foreach(text IN LISTS ARGN)
        string(FIND "${output}" "${text}" place)
        if(place EQUAL -1)
            string(APPEND problems "${folder}: \"${text}\" is missing in:\n${output}\n")
        endif()
    endforeach()
    set(problems "${problems}" PARENT_SCOPE)
endfunction()

# Gives `folder` a copy of the scripts.
function(copy_scripts folder)
    file(COPY ${scripts}/ DESTINATION ${folder})
endfunction()

# The mistakes are reported with their lines, the host goes on, and the counts agree.
expect_run(${scripts} 0
    ":9: attempt to index local 'champion' (a nil value)"
    "[LuaEnvironment] Error l.14 while calling position. Expected world::types::Vec, got string."
    "[LuaFunction] Error l.19 while calling hurt. Expected int, got string."
    "tick 100: state of "
    "tick 300: state of "
    " vectors: as in the arena"
    "\n states transferred 3 3\n"
    "\nBoth environments are gone made destroyed\n Vec objects "
    "\n Vec objects left none\n"
    "Saved again as scripts_copy_scripts.tbscripts: 7 of 7 scripts unchanged\n"
    "Host and scripts agree.")

# A script that counts once too often: the comparison can fail.
copy_scripts(${scratch}/miscounting)
file(APPEND ${scratch}/miscounting/tally.lua "count('hits')\n")
expect_run(${scratch}/miscounting 1 "<- differs" "Host and scripts DIFFER.")

# A state that tells something else than the arena has.
copy_scripts(${scratch}/lying)
file(APPEND ${scratch}/lying/state.lua "
local honestState = state
function state()
    local known = honestState()
    known.units[1].hitPoints = 0.5
    known.units[2].position.x = -1
    return known
end
")
expect_run(${scratch}/lying 1
    ": different are hit points of guard number 2, "
    " from (-1, "
    ", sum of the positions\n"
    "Host and scripts DIFFER.")

# A vector that its script disowns: nobody destroys it.
copy_scripts(${scratch}/leaking)
file(APPEND ${scratch}/leaking/waves.lua "Vec.new():disableGc()\n")
expect_run(${scratch}/leaking 1
    "\n Vec objects left 1 <- differs\n"
    "Host and scripts DIFFER.")

# A vector whose ownership a script transfers and takes back: it is destroyed twice.
copy_scripts(${scratch}/keeping)
file(APPEND ${scratch}/keeping/state.lua "
local honestState = state
local kept
function state()
    local known = honestState()
    kept = known.units[1].position
    return known
end
schedule(250, function()
    count('timers')
    kept:enableGc()
    kept = nil
end)
")
expect_run(${scratch}/keeping 1
    "state of "
    "\n Vec objects left none\n"
    "<- differs\n"
    "Host and scripts DIFFER.")

# A script that does not compile is left out, the others run.
copy_scripts(${scratch}/broken)
file(APPEND ${scratch}/broken/mistakes.lua "end\n")
expect_run(${scratch}/broken 0
    "[LuaScript] Error while compiling script 'mistakes.lua' : "
    "mistakes.lua: left out, error code 3"
    "Host and scripts agree.")

copy_scripts(${scratch}/incomplete)
file(REMOVE ${scratch}/incomplete/brains.lua)
expect_run(${scratch}/incomplete 2 "The scripts define no function 'decide'.")

copy_scripts(${scratch}/unwitnessed)
file(WRITE ${scratch}/unwitnessed/witness/compare.lua "")
expect_run(${scratch}/unwitnessed 2 "The scripts of the witness define no function 'compare'.")

expect_run(${scratch}/missing 2 "There is no script to run.")

file(REMOVE_RECURSE ${scratch})
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "${problems}")
endif()
