# Included by CMake after project(), for planted faults only. Programs that compile the library's
# insides in take them from the shared library instead: a fault is then one object and one library,
# and no program has to be linked again. The library tells which basic blocks a run reaches
# (tracer.cpp), and is not optimised, because it is compiled once for each fault.

function(tobrel_take_insides_from_library)
    set_target_properties(TobrelScriptsObjects PROPERTIES
        CXX_VISIBILITY_PRESET default
        VISIBILITY_INLINES_HIDDEN OFF)
    foreach(target IN ITEMS TobrelScriptsObjects TobrelScriptsPort)
        target_compile_options(${target} PRIVATE -O0 -g1 -fsanitize-coverage=trace-pc)
    endforeach()
    target_sources(TobrelScripts PRIVATE ${PROJECT_SOURCE_DIR}/mutants/tracer.cpp)
    set_property(TARGET TobrelScripts PROPERTY LINK_OPTIONS "") # no list of exported names

    add_library(TobrelScriptsInsides INTERFACE)
    get_target_property(folders TobrelScriptsObjects INTERFACE_INCLUDE_DIRECTORIES)
    get_target_property(definitions TobrelScriptsObjects INTERFACE_COMPILE_DEFINITIONS)
    get_target_property(libraries TobrelScriptsObjects INTERFACE_LINK_LIBRARIES)
    list(FILTER libraries EXCLUDE REGEX "LINK_ONLY|TobrelScriptsObjects")
    target_include_directories(TobrelScriptsInsides INTERFACE ${folders})
    target_compile_definitions(TobrelScriptsInsides INTERFACE ${definitions})
    target_link_libraries(TobrelScriptsInsides INTERFACE ${libraries} TobrelScripts)

    foreach(folder IN ITEMS tests fuzz tools)
        if(NOT IS_DIRECTORY ${PROJECT_SOURCE_DIR}/${folder})
            continue()
        endif()
        get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(target IN LISTS targets)
            get_target_property(libraries ${target} LINK_LIBRARIES)
            if("TobrelScriptsObjects" IN_LIST libraries)
                list(TRANSFORM libraries REPLACE "^TobrelScriptsObjects$" TobrelScriptsInsides)
                set_property(TARGET ${target} PROPERTY LINK_LIBRARIES ${libraries})
            endif()
        endforeach()
    endforeach()
endfunction()

if(PROJECT_IS_TOP_LEVEL)
    cmake_language(DEFER CALL tobrel_take_insides_from_library)
endif()
