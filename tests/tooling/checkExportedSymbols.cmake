# The shared library exports its own classes and nothing else of ours.
cmake_minimum_required(VERSION 3.25)

execute_process(
    COMMAND ${nm} -DC --defined-only ${library}
    OUTPUT_VARIABLE output
    COMMAND_ERROR_IS_FATAL ANY)

# Semicolons and brackets mean something to CMake's lists.
string(REGEX REPLACE "[][;]" "," output "${output}")
string(REPLACE "\n" ";" lines "${output}")

set(rtti "^(vtable|typeinfo|typeinfo name|VTT|guard variable|non-virtual thunk) (for|to) ")
set(inside "^tbScripts::(lua|port|detail)::")
set(own "^tbScripts::|^tbCommon::SingletonClass<tbScripts::")

set(ownCount 0)
set(problems "")
foreach(line IN LISTS lines)
    if(NOT line MATCHES "^[0-9a-fA-F]* *([A-Za-z]) (.+)$")
        continue()
    endif()
    set(name "${CMAKE_MATCH_2}")
    string(REGEX REPLACE "${rtti}" "" described "${name}")
    string(REGEX REPLACE "\\(.*$" "" head "${described}") # parameters say nothing about the owner

    if(head MATCHES "${inside}")
        string(APPEND problems "  ${line}\n")
    elseif(head MATCHES "${own}")
        math(EXPR ownCount "${ownCount} + 1")
    else()
        string(APPEND problems "  ${line}\n")
    endif()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Exported, but no business of a host:\n${problems}")
endif()
if(ownCount EQUAL 0)
    message(FATAL_ERROR "Nothing of tbScripts is exported; this check has looked at nothing.")
endif()
message(STATUS "${ownCount} symbols of tbScripts")
