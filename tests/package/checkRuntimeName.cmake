# The name under which a host finds the library at run time changes with each version that may break
# the host: before 1.0 with the minor one, later with the major one. The package file for CMake
# accepts the same versions.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

string(REGEX MATCH "^([0-9]+)\\.([0-9]+)\\." matched ${version})
set(major ${CMAKE_MATCH_1})
set(minor ${CMAKE_MATCH_2})
set(wanted ${major})
if(major EQUAL 0)
    set(wanted ${major}.${minor})
endif()

ask(dynamic ${readelf} -d ${file})
if(NOT dynamic MATCHES "SONAME[^\n]*\\[(libTobrelScripts\\.so\\.[^]]*)\\]")
    message(FATAL_ERROR "${file} has no name of its own:\n${dynamic}")
endif()
if(NOT CMAKE_MATCH_1 STREQUAL "libTobrelScripts.so.${wanted}")
    message(FATAL_ERROR "Version ${version} is called ${CMAKE_MATCH_1}")
endif()

# expect_compatible(<version> <TRUE or FALSE>)
function(expect_compatible asked wanted)
    set(PACKAGE_FIND_VERSION ${asked})
    string(REGEX MATCH "^([0-9]+)\\.([0-9]+)" matched ${asked})
    set(PACKAGE_FIND_VERSION_MAJOR ${CMAKE_MATCH_1})
    set(PACKAGE_FIND_VERSION_MINOR ${CMAKE_MATCH_2})
    set(PACKAGE_VERSION_COMPATIBLE FALSE)
    include(${packageVersionFile})
    if(NOT PACKAGE_VERSION_COMPATIBLE STREQUAL wanted)
        message(FATAL_ERROR
            "CMake's package ${version} and a host that asks for ${asked}: "
            "${PACKAGE_VERSION_COMPATIBLE}")
    endif()
endfunction()

if(packageVersionFile)
    math(EXPR nextMinor "${minor} + 1")
    expect_compatible(${major}.${minor}.0 TRUE)
    expect_compatible(${major}.${nextMinor}.0 FALSE)
endif()
