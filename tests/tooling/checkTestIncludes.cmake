# Each test file includes what it uses of the headers that builds of tests precompile, or a header of the
# project that does. A precompiled header hides a missing include, and the presets without one would
# break.
cmake_minimum_required(VERSION 3.25)

set(folders tests include src)
file(GLOB platforms RELATIVE ${root} ${root}/platform/*/include)
list(APPEND folders ${platforms})

# Sets `reached_<file>` to the headers from outside the project that the file includes, by itself or
# through headers of the project.
function(reach file)
    if(DEFINED CACHE{reached_${file}})
        return()
    endif()
    set("reached_${file}" "" CACHE INTERNAL "") # headers may include each other
    file(READ ${root}/${file} text)
    string(REGEX MATCHALL "#[ ]*include [<\"][^>\"]+[>\"]" includes "${text}")
    set(reached "")
    foreach(include IN LISTS includes)
        string(REGEX REPLACE ".*[<\"]([^>\"]+)[>\"]" "\\1" header "${include}")
        set(own "")
        foreach(folder IN LISTS folders)
            if(EXISTS ${root}/${folder}/${header})
                set(own ${folder}/${header})
                break()
            endif()
        endforeach()
        if(own STREQUAL "")
            list(APPEND reached ${header})
        else()
            reach(${own})
            list(APPEND reached ${reached_${own}})
        endif()
    endforeach()
    list(REMOVE_DUPLICATES reached)
    set("reached_${file}" "${reached}" CACHE INTERNAL "")
endfunction()

# Uses, and the headers of which one has to be reached. Each header of the framework includes those of
# the standard library.
set(framework gtest/gtest.h gmock/gmock.h)
set(rules FRAMEWORK MATCHERS FUNCTION MEMORY STRING VECTOR)
set(use_FRAMEWORK
    "[^A-Z_](EXPECT_|ASSERT_|TEST|TYPED_TEST|INSTANTIATE_|SCOPED_TRACE|\
GTEST_|ADD_FAILURE)[A-Z_]*\\(|testing::")
set(need_FRAMEWORK ${framework})
set(use_MATCHERS
    "(EXPECT|ASSERT)_THAT\\(|MOCK_METHOD|\
testing::(AllOf|AnyOf|Contains|Each|Eq|Field|IsEmpty|Not|Pair|SizeIs)\\(|\
testing::(ElementsAre|EndsWith|HasSubstr|MatchesRegex|StartsWith|UnorderedElementsAre)")
set(need_MATCHERS gmock/gmock.h)
set(use_FUNCTION "std::function<")
set(need_FUNCTION functional ${framework})
set(use_MEMORY "std::(unique_ptr|shared_ptr|weak_ptr|make_unique|make_shared)<")
set(need_MEMORY memory ${framework})
set(use_STRING "std::(string|to_string)[^a-z_]")
set(need_STRING string ${framework})
set(use_VECTOR "std::vector<")
set(need_VECTOR vector ${framework})

file(GLOB_RECURSE files RELATIVE ${root} ${root}/tests/*.cpp ${root}/tests/*.h)
list(FILTER files EXCLUDE REGEX "^tests/(package|soak)/") # precompile nothing
set(problems "")
foreach(file IN LISTS files)
    reach(${file})
    file(READ ${root}/${file} text)
    string(REGEX REPLACE "//[^\n]*" "" text "\n${text}")
    foreach(rule IN LISTS rules)
        if(NOT text MATCHES "${use_${rule}}")
            continue()
        endif()
        set(match "${CMAKE_MATCH_0}")
        set(isReached FALSE)
        foreach(header IN LISTS need_${rule})
            if(header IN_LIST reached_${file})
                set(isReached TRUE)
            endif()
        endforeach()
        if(NOT isReached)
            string(STRIP "${match}" match)
            list(GET need_${rule} 0 header)
            string(APPEND problems "  ${file} uses ${match} without <${header}>\n")
        endif()
    endforeach()
endforeach()

list(LENGTH files count)
if(count EQUAL 0)
    message(FATAL_ERROR "No tests found below ${root}.")
endif()
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Includes that only a precompiled header hides:\n${problems}")
endif()
