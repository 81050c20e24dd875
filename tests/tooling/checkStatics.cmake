# No static object of the library does anything at its beginning or end: hosts use the library while
# their own static objects are created and destroyed, so what is created by its first use or destroyed
# after `main` may be used before or after its life. Static data is constant, or there are no
# destructors to run.
#
# `objects` is a file with the path of one object file in each line.
cmake_minimum_required(VERSION 3.25)

# Both are constants that are there before `main`; the destructors that the compiler registers for
# them leave them as they are (StaticLifeTest).
set(allowed FunctionParameter.cpp ScriptObjectReference.cpp)

file(STRINGS ${objects} paths)
set(problems "")
set(count 0)
foreach(path IN LISTS paths)
    execute_process(COMMAND ${nm} ${path} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
    math(EXPR count "${count} + 1")
    get_filename_component(name ${path} NAME)
    string(REGEX REPLACE "\\.(o|obj)$" "" source ${name})

    # Threads wait for it that use an object for the first time.
    if(symbols MATCHES "__cxa_guard_acquire")
        string(APPEND problems "  ${source}: a static object in a function is created by its first use\n")
    endif()
    if(source IN_LIST allowed)
        continue()
    endif()
    if(symbols MATCHES "__cxa_(thread_)?atexit")
        string(APPEND problems "  ${source}: a static object has a destructor\n")
    elseif(symbols MATCHES "_GLOBAL__sub_I_")
        string(APPEND problems "  ${source}: a static object has a constructor that runs\n")
    endif()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Static objects that have a beginning or an end:\n${problems}")
endif()
if(count EQUAL 0)
    message(FATAL_ERROR "No object files; this check has looked at nothing.")
endif()
message(STATUS "${count} object files")
