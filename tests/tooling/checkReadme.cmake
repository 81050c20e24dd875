# The first program in README.md is examples/readme.cpp, which is compiled and run.
cmake_minimum_required(VERSION 3.25)

set(opening "```cpp\n")
set(closing "\n```")

file(READ ${root}/README.md readme)
file(READ ${root}/examples/readme.cpp program)

string(FIND "${readme}" "${opening}" begin)
if(begin EQUAL -1)
    message(FATAL_ERROR "README.md holds no C++ program.")
endif()
string(LENGTH "${opening}" openingLength)
math(EXPR begin "${begin} + ${openingLength}")
string(SUBSTRING "${readme}" ${begin} -1 shown)
string(FIND "${shown}" "${closing}" end)
if(end EQUAL -1)
    message(FATAL_ERROR "README.md does not close its C++ program.")
endif()
string(SUBSTRING "${shown}" 0 ${end} shown)

if(NOT "${shown}\n" STREQUAL "${program}")
    message(FATAL_ERROR "README.md and examples/readme.cpp differ. README.md shows:\n${shown}")
endif()
