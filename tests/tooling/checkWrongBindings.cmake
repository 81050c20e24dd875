# Bindings that cannot be are refused by the compiler in words: the message of each snippet of
# wrongBindings.txt stands in the first error. `platform` holds the stand-ins, whose
# headers they need.
cmake_minimum_required(VERSION 3.25)

set(folders -I${root}/include)
file(GLOB includes ${platform}/*/include)
foreach(folder IN LISTS includes)
    list(APPEND folders -I${folder})
endforeach()

set(prelude [[
#include <tbScripts/Bind.h>
#include <tbScripts/ScriptFunction.h>

#include <cstddef>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

using namespace tbScripts;

struct Other
{
};

struct Unit
{
    void heal(int points) { health += points; }
    int health = 0;
    int* raw = nullptr;
};

struct Unique
{
    Unique() = default;
    Unique(const Unique&) = delete;
    Unique(Unique&&) = default;
};

struct Fixed
{
    explicit Fixed(int = 0) {}
    Fixed(const Fixed&) = delete;
};

struct Constant
{
    const int value = 0;
};

struct Overloaded
{
    void operator()(int) {}
    void operator()(const char*) {}
};

struct Deleter
{
    void operator()(Unit*) {}
    int state = 0;
};

double halve(double number);

double takesVector(const std::vector<int>& numbers);

std::string_view viewOf(const std::string& text);
]])

# The headers once, for all snippets.
file(WRITE ${scratch}/prelude.h "${prelude}")
execute_process(
    COMMAND ${compiler} -std=c++17 ${folders} -x c++-header ${scratch}/prelude.h
        -o ${scratch}/prelude.h.gch
    RESULT_VARIABLE result
    ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "The public headers do not compile:\n${output}")
endif()

file(STRINGS ${root}/tests/bindings/typed/wrongBindings.txt lines)
set(snippet "")
set(count 0)
set(problems "")
foreach(line IN LISTS lines)
    if(line MATCHES "^#" OR line STREQUAL "")
        continue()
    elseif(NOT line MATCHES "^== (.*)$")
        string(APPEND snippet "    ${line}\n")
        continue()
    endif()
    set(message "TobrelScripts: ${CMAKE_MATCH_1}")
    file(WRITE ${scratch}/snippet.cpp
        "void declare(Environment& environment, Unit& unit)\n{\n    (void)unit;\n${snippet}}\n")
    execute_process(
        COMMAND ${compiler} -std=c++17 -fsyntax-only ${folders}
            -include ${scratch}/prelude.h ${scratch}/snippet.cpp
        RESULT_VARIABLE result
        ERROR_VARIABLE output)
    string(REGEX MATCH "error: [^\n]*" first "${output}")
    string(FIND "${first}" "${message}" place)
    if(result EQUAL 0 OR place EQUAL -1)
        string(APPEND problems "${snippet}  should say: ${message}\n  says: ${first}\n")
    endif()
    set(snippet "")
    math(EXPR count "${count} + 1")
endforeach()

if(count LESS 40)
    string(APPEND problems "only ${count} snippets were tried\n")
endif()
if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Bindings that cannot be:\n${problems}")
endif()
