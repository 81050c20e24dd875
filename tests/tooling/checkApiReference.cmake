# Everything public is described, and every description can be read: Doxygen warns of nothing.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
file(MAKE_DIRECTORY ${scratch})
file(WRITE ${scratch}/Doxyfile
    "@INCLUDE = ${root}/docs/Doxyfile\nOUTPUT_DIRECTORY = ${scratch}\n")
execute_process(
    COMMAND ${doxygen} ${scratch}/Doxyfile
    WORKING_DIRECTORY ${root}
    RESULT_VARIABLE result
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    string(REPLACE "\n" "\n  " output "  ${output}")
    message(FATAL_ERROR "The API reference has gaps:\n${output}")
endif()
if(NOT EXISTS ${scratch}/html/classtbScripts_1_1Environment.html)
    message(FATAL_ERROR "The API reference has no page of Environment.")
endif()

# Doxygen says nothing of enumerators.
file(GLOB headers ${root}/include/tbScripts/*.h)
foreach(header IN LISTS headers)
    file(STRINGS ${header} enumerators REGEX "^    [A-Z_]+ = [0-9]+,?")
    foreach(enumerator IN LISTS enumerators)
        if(NOT enumerator MATCHES "///<")
            message(FATAL_ERROR "${header}: nothing is said of${enumerator}")
        endif()
    endforeach()
endforeach()
file(REMOVE_RECURSE ${scratch})
