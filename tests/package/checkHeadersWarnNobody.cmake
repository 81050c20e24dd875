# A host with strict warnings sees none of them in our headers, in the standard that we need and in
# the next one.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(GLOB_RECURSE headers ${library}/include/*.h)
file(GLOB_RECURSE platformHeaders ${library}/platform/*/include/*.h)
file(GLOB folders ${library}/include ${library}/platform/*/include)
list(TRANSFORM folders PREPEND -I)

set(text "")
foreach(header IN LISTS headers platformHeaders)
    string(APPEND text "#include \"${header}\"\n")
endforeach()
# The program uses the templates, which nobody looks into otherwise.
string(APPEND text "#include \"${source}/consumer.cpp\"\n")
file(WRITE ${scratch}/allHeaders.cpp "${text}")

foreach(standard IN ITEMS c++17 c++20)
    run(${compiler} -std=${standard} -fsyntax-only
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror ${folders} ${scratch}/allHeaders.cpp)
endforeach()

file(REMOVE_RECURSE ${scratch})
