# The places that pages name exist: each path in backticks that begins with a folder of the project.
cmake_minimum_required(VERSION 3.25)

file(GLOB pages RELATIVE ${root}
    ${root}/*.md ${root}/docs/*.md ${root}/docs/guide/*.md ${root}/tests/*.md ${root}/bench/*.md)
set(problems "")
set(count 0)
foreach(page IN LISTS pages)
    file(READ ${root}/${page} text)
    string(REGEX MATCHALL
        "`(bench|cmake|examples|fuzz|include|mutants|platform|src|tests|tools)/[A-Za-z0-9_./-]+`"
        paths "${text}")
    list(REMOVE_DUPLICATES paths)
    foreach(path IN LISTS paths)
        math(EXPR count "${count} + 1")
        string(REPLACE "`" "" path "${path}")
        if(NOT EXISTS ${root}/${path})
            string(APPEND problems "  ${page} names ${path}, which does not exist\n")
        endif()
    endforeach()
endforeach()
if(count LESS 20)
    message(FATAL_ERROR "Only ${count} paths found in the pages below ${root}.")
endif()
if(problems)
    message(FATAL_ERROR "Pages that name places which are not there:\n${problems}")
endif()
