# Texts are interface. Each literal of the files that hold them stands in docs/messages.md, and each
# piece of a text that stands there is a literal of the sources.
cmake_minimum_required(VERSION 3.25)

set(document ${root}/docs/messages.md)

# What means something to CMake's lists is replaced on both sides.
function(read_plainly out file)
    file(READ ${file} text)
    string(REGEX REPLACE "[][;\\]" "," text "${text}")
    set(${out} "${text}" PARENT_SCOPE)
endfunction()

# Sets `out` to the literals of a source; those with only blanks between them are one.
function(find_literals out file)
    read_plainly(text ${file})
    string(REGEX REPLACE "\n[ \t]*#[^\n]*" "\n" text "\n${text}")
    string(REGEX REPLACE "//[^\n]*" "" text "${text}")
    string(REGEX REPLACE "\"[ \t\n]+\"" "" text "${text}")
    string(REGEX MATCHALL "\"[^\"\n]+\"" literals "${text}")
    list(TRANSFORM literals REPLACE "\"" "")
    set(${out} ${literals} PARENT_SCOPE)
endfunction()

# The pieces of the described texts: the first column of each table, cut at what is filled in.
read_plainly(text ${document})
string(REGEX MATCHALL "\n\\| `[^`\n]+` \\|" rows "${text}")
set(described "")
foreach(row IN LISTS rows)
    string(REGEX REPLACE "^\n\\| `(.*)` \\|$" "\\1" row "${row}")
    string(REGEX REPLACE "<[^>]*>" ";" pieces "${row}")
    list(APPEND described ${pieces})
endforeach()
list(REMOVE_ITEM described "")

file(GLOB_RECURSE messageFiles ${root}/src/*Messages.h)
set(messageFiles ${messageFiles}
    ${root}/src/core/lua/calls/LuaHostCall.cpp
    ${root}/src/environments/DummyEnvironmentStrategy.cpp)

set(problems "")
foreach(file IN LISTS messageFiles)
    find_literals(literals ${file})
    foreach(literal IN LISTS literals)
        if(NOT literal IN_LIST described)
            string(APPEND problems "  ${file}: \"${literal}\" is not in docs/messages.md\n")
        endif()
    endforeach()
endforeach()

set(written "")
file(GLOB_RECURSE files ${root}/src/*.h ${root}/src/*.cpp)
foreach(file IN LISTS files)
    find_literals(literals ${file})
    list(APPEND written ${literals})
endforeach()
foreach(piece IN LISTS described)
    if(NOT piece IN_LIST written)
        string(APPEND problems "  docs/messages.md: \"${piece}\" is in no source\n")
    endif()
endforeach()

list(LENGTH described count)
if(count EQUAL 0)
    string(APPEND problems "  docs/messages.md: no texts found\n")
endif()
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Texts and their description differ:\n${problems}")
endif()
