# Runs the example host: on its own scripts, and on copies with one thing changed.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
set(problems "")

# expect_run(<folder> <exit status> <text of the output>...)
function(expect_run folder status)
    execute_process(
        COMMAND ${demo} ${folder}
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT result STREQUAL status)
        string(APPEND problems "${folder}: wanted status ${status}, got ${result}:\n${output}\n")
    endif()
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
    file(MAKE_DIRECTORY ${folder})
    file(GLOB files ${scripts}/*.lua)
    file(COPY ${files} DESTINATION ${folder})
endfunction()

# Both mistakes are reported with their lines, the host goes on, and the counts agree.
expect_run(${scripts} 0
    ":9: attempt to index local 'champion' (a nil value)"
    "[LuaFunction] Error l.14 while calling damage. Expected int, got string."
    "tick 300: "
    "Host and scripts agree.")

# A script that counts once too often: the comparison can fail.
copy_scripts(${scratch}/miscounting)
file(APPEND ${scratch}/miscounting/tally.lua "count('hits')\n")
expect_run(${scratch}/miscounting 1 "<- differs" "Host and scripts DIFFER.")

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

expect_run(${scratch}/missing 2 "There is no script to run.")

file(REMOVE_RECURSE ${scratch})
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "${problems}")
endif()
