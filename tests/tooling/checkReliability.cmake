# Each test that docs/reliability.md names is there, and each file of tests/corpus is named.
cmake_minimum_required(VERSION 3.25)

file(GLOB_RECURSE sources ${root}/tests/*.cpp)
set(cases "")
set(suites "")
foreach(source IN LISTS sources)
    file(READ ${source} text)
    string(REGEX MATCHALL "(TEST|TEST_F|TEST_P|TYPED_TEST)\\([A-Za-z0-9_]+,[ \n]*[A-Za-z0-9_]+\\)"
        found "${text}")
    foreach(case IN LISTS found)
        string(REGEX REPLACE "^[A-Z_]+\\(([A-Za-z0-9_]+),[ \n]*([A-Za-z0-9_]+)\\)$" "\\1.\\2"
            case "${case}")
        string(REGEX REPLACE "\\..*" "" suite "${case}")
        list(APPEND cases ${case})
        list(APPEND suites ${suite})
    endforeach()

    # Suites may consist of rows alone.
    string(REGEX MATCHALL "Facts<[A-Za-z0-9_]+>" tables "${text}")
    list(TRANSFORM tables REPLACE "^Facts<|>$" "")
    list(APPEND suites ${tables})
endforeach()

set(problems "")
file(READ ${root}/docs/reliability.md page)
string(REGEX MATCHALL "`[A-Z][A-Za-z0-9]*Test(\\.[A-Za-z0-9]+)?`" named "${page}")
string(REPLACE "`" "" named "${named}")
foreach(name IN LISTS named)
    if(NOT name IN_LIST cases AND NOT name IN_LIST suites)
        string(APPEND problems "  docs/reliability.md names ${name}, which is no test\n")
    endif()
endforeach()

list(TRANSFORM named REPLACE "\\..*" "")
file(GLOB sources ${root}/tests/corpus/*.cpp)
foreach(source IN LISTS sources)
    get_filename_component(suite ${source} NAME_WE)
    if(NOT suite IN_LIST named)
        string(APPEND problems "  docs/reliability.md does not name ${suite}\n")
    endif()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "The page of promises and the tests differ:\n${problems}")
endif()
