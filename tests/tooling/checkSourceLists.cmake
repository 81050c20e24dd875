# The lists of headers and sources name exactly what is on disk, and each name once.
cmake_minimum_required(VERSION 3.25)

include(${root}/cmake/TobrelScriptsSources.cmake)

set(problems "")

# Compares the files that match the patterns with those of a list. A list name inside a list file is
# relative to the root.
function(compare_with_disk listName)
    set(onDisk "")
    foreach(pattern IN LISTS ARGN)
        file(GLOB_RECURSE found RELATIVE ${root} ${root}/${pattern})
        list(APPEND onDisk ${found})
    endforeach()

    foreach(file IN LISTS onDisk)
        list(FIND ${listName} "${file}" place)
        if(place EQUAL -1)
            string(APPEND problems "  ${file} is on disk, but not in ${listName}\n")
        endif()
    endforeach()

    set(seen "")
    foreach(file IN LISTS ${listName})
        list(FIND onDisk "${file}" place)
        if(place EQUAL -1)
            string(APPEND problems "  ${file} is in ${listName}, but not on disk\n")
        endif()
        list(FIND seen "${file}" place)
        if(NOT place EQUAL -1)
            string(APPEND problems "  ${file} is in ${listName} twice\n")
        endif()
        list(APPEND seen "${file}")
    endforeach()
    set(problems "${problems}" PARENT_SCOPE)
endfunction()

compare_with_disk(TOBREL_SCRIPTS_HEADERS "include/*")
set(TOBREL_SCRIPTS_SOURCES_AND_PORT ${TOBREL_SCRIPTS_SOURCES} ${TOBREL_SCRIPTS_PORT})
compare_with_disk(TOBREL_SCRIPTS_SOURCES_AND_PORT "src/*")
compare_with_disk(TOBREL_SCRIPTS_DEMO "examples/demo/*.cpp" "examples/demo/*.h")
compare_with_disk(TOBREL_SCRIPTS_GUIDE "examples/guide/*.cpp" "examples/guide/*.h")
compare_with_disk(TOBREL_SCRIPTS_TABLES "tools/tables/*")
compare_with_disk(TOBREL_SCRIPTS_TOOL "tools/tbscripts/*")

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "cmake/TobrelScriptsSources.cmake and the disk differ:\n${problems}")
endif()
