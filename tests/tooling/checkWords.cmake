# Words that make the project hard to search stay out of sources, pages and scripts: those of words.txt,
# also where a comment breaks the line between two of them. `words: allow <word>` in a file is an
# exception for that file.
#
# Why: docs/decisions/0026-words-of-the-project.md
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${CMAKE_CURRENT_LIST_DIR}/words.txt lines REGEX " => ")
set(words "")
foreach(line IN LISTS lines)
    string(REGEX REPLACE " => .*" "" word "${line}")
    list(APPEND words "${word}")
    string(REGEX REPLACE ".* => " "" "better_${word}" "${line}")
    set("part_${word}" "")
    string(REPLACE " " ";" parts "${word}")
    foreach(part IN LISTS parts)
        string(LENGTH "${part_${word}}" longest)
        string(LENGTH "${part}" length)
        if(NOT length LESS longest)
            set("part_${word}" "${part}")
        endif()
    endforeach()
endforeach()

file(GLOB files RELATIVE ${root} ${root}/*.md ${root}/CMakeLists.txt ${root}/dev)
foreach(folder IN ITEMS .ci bench cmake docs examples fuzz include platform src tests tools)
    file(GLOB_RECURSE found RELATIVE ${root}
        ${root}/${folder}/*.h ${root}/${folder}/*.cpp ${root}/${folder}/*.md ${root}/${folder}/*.lua
        ${root}/${folder}/*.cmake ${root}/${folder}/CMakeLists.txt ${root}/${folder}/*.py
        ${root}/${folder}/run)
    list(APPEND files ${found})
endforeach()

# Checking means naming the words.
list(FILTER files EXCLUDE REGEX "^docs/decisions/0026|^tests/tooling/checks?(CanFail|Words)")
set(problems "")
foreach(file IN LISTS files)
    file(READ ${root}/${file} text)
    string(TOLOWER " ${text}" text)
    set(flat "")
    foreach(word IN LISTS words)
        # Most files hold none of them: the longest part of a word, which stands on one line, tells so
        # quickly.
        string(FIND "${text}" "${part_${word}}" place)
        if(place EQUAL -1)
            continue()
        endif()
        if(flat STREQUAL "")
            string(REGEX REPLACE "\n[ \t]*(///?<?|#+|--)?[ \t]*" " " flat "${text}")
        endif()
        string(FIND "${flat}" "${word}" place)
        if(place EQUAL -1)
            continue()
        endif()
        string(FIND "${flat}" "words: allow ${word}" allowed)
        if(NOT allowed EQUAL -1)
            continue()
        endif()
        if(flat MATCHES "([^a-z_][^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?[^\n]?)?[^a-z_]${word}[^a-z_]")
            string(REGEX REPLACE "[^a-z_]$" "" match "${CMAKE_MATCH_0}")
            string(STRIP "${match}" match)
            string(APPEND problems
                "  ${file}: \"${match}\": write ${better_${word}}, not \"${word}\"\n")
        endif()
    endforeach()
endforeach()

list(LENGTH files count)
if(count LESS 100)
    message(FATAL_ERROR "Only ${count} files found below ${root}.")
endif()
if(problems)
    message(FATAL_ERROR "Words that must not come back:\n${problems}")
endif()
