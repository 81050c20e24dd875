# Script errors are raised in a few files only, whose functions own nothing when they raise. On
# common machines raising unwinds and runs destructors, so no test run would notice a leak.
cmake_minimum_required(VERSION 3.25)

set(allowed
    src/bindings/lua/LuaRaise.h
    src/core/lua/calls/LuaStackGuards.cpp)

set(raising "(^|[^A-Za-z0-9_])(lua_error|luaL_error|luaL_check[a-z]*|luaL_arg[a-z]*)")

set(problems "")
file(GLOB_RECURSE files RELATIVE ${root} ${root}/src/*.h ${root}/src/*.cpp)
foreach(file IN LISTS files)
    if(file IN_LIST allowed)
        continue()
    endif()
    file(STRINGS ${root}/${file} lines REGEX "${raising}")
    foreach(line IN LISTS lines)
        string(REGEX REPLACE "//.*$" "" code "${line}")
        if(code MATCHES "${raising}")
            string(STRIP "${line}" line)
            string(APPEND problems "  ${file}: ${line}\n")
        endif()
    endforeach()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Raised outside the files listed in this script:\n${problems}")
endif()
