# Every test on disk is in a list and so gets built; no test is switched off.
cmake_minimum_required(VERSION 3.25)

include(${root}/cmake/TobrelScriptsSources.cmake)

set(listed
    ${TOBREL_SCRIPTS_PUBLIC_TESTS}
    ${TOBREL_SCRIPTS_INTERNAL_TESTS}
    ${TOBREL_PLATFORM_TESTS}
    ${TOBREL_SCRIPTS_MEMORY_TESTS}
    ${TOBREL_SCRIPTS_SOAK}
    ${TOBREL_TOOL_TESTS}
    ${TOBREL_SCRIPTS_TEST_SUPPORT}
    ${TOBREL_SCRIPTS_INTERNAL_TEST_SUPPORT})
file(GLOB_RECURSE onDisk RELATIVE ${root} ${root}/tests/*.cpp ${root}/tests/*.h)
list(FILTER onDisk EXCLUDE REGEX "^tests/package/") # projects of their own

set(problems "")
foreach(file IN LISTS onDisk)
    list(FIND listed "${file}" place)
    if(place EQUAL -1)
        string(APPEND problems "  ${file}: in no list of cmake/TobrelScriptsSources.cmake\n")
    endif()

    # A skip needs its reason streamed in on the same line.
    file(STRINGS ${root}/${file} lines REGEX "DISABLED_|GTEST_SKIP\\(\\)[ \t]*;")
    foreach(line IN LISTS lines)
        string(STRIP "${line}" line)
        string(APPEND problems "  ${file}: ${line}\n")
    endforeach()
endforeach()

foreach(file IN LISTS listed)
    if(NOT EXISTS ${root}/${file})
        string(APPEND problems "  ${file}: listed, but not on disk\n")
    endif()
endforeach()

# The same file under two executables would count its cases twice.
set(tests
    ${TOBREL_SCRIPTS_PUBLIC_TESTS} ${TOBREL_SCRIPTS_INTERNAL_TESTS} ${TOBREL_PLATFORM_TESTS}
    ${TOBREL_SCRIPTS_MEMORY_TESTS} ${TOBREL_TOOL_TESTS})
list(LENGTH tests count)
list(REMOVE_DUPLICATES tests)
list(LENGTH tests distinctCount)
if(NOT count EQUAL distinctCount)
    string(APPEND problems "  a test file is listed more than once\n")
endif()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Tests that nobody runs, or lists gone wrong:\n${problems}")
endif()
