# A new kind of parameter does not compile in silence: each place that tells kinds apart has to name
# it. `options` are those that the library is compiled with, `includes` its folders.
cmake_minimum_required(VERSION 3.25)

set(header include/tbScripts/FunctionParameterType.h)
file(READ ${root}/${header} text)
string(REGEX REPLACE "(PARAM_TYPE_SCRIPT_OBJECT = 9)" "\\1, PARAM_TYPE_NEW = 10" changed "${text}")
if(changed STREQUAL text)
    message(FATAL_ERROR "${header} has no last kind")
endif()
file(WRITE ${scratch}/tbScripts/FunctionParameterType.h "${changed}")

set(folders -I${scratch})
foreach(folder IN LISTS includes)
    list(APPEND folders -I${folder})
endforeach()

set(problems "")
# expect_complaint(<source> <the places in it>...)
function(expect_complaint source)
    execute_process(
        COMMAND ${compiler} -std=c++17 -fsyntax-only ${options} -Wno-error ${folders} ${root}/${source}
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        string(APPEND problems "  ${source} does not compile:\n${output}\n")
    endif()
    string(REGEX MATCHALL "PARAM_TYPE_NEW[^\n]*handled in switch" complaints "${output}")
    list(LENGTH complaints count)
    list(LENGTH ARGN places)
    if(count LESS places)
        string(APPEND problems "  ${source}: of ${ARGN} only ${count} have to name it\n")
    endif()
    set(problems "${problems}" PARENT_SCOPE)
endfunction()

expect_complaint(src/core/FunctionParameter.cpp _memberOf)
expect_complaint(src/bindings/lua/values/LuaCallBridge.cpp accepts _read _push)

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "A new kind of parameter would be refused:\n${problems}")
endif()
