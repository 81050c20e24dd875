# Installs the library, then configures, builds and runs one consumer of it.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${scratch})

# The consumers find the package through the prefix alone, wherever the library was configured to go.
run(${CMAKE_COMMAND} --install ${build} --prefix "${scratch}/a prefix")

# Moved once more: nothing installed may remember where it was put.
set(prefix "${scratch}/another  prefix")
file(RENAME "${scratch}/a prefix" ${prefix})

# The family's other libraries may come from elsewhere, so what was set before stays.
set(ENV{PKG_CONFIG_PATH} ${prefix}/${libFolder}/pkgconfig:$ENV{PKG_CONFIG_PATH})

# Each of our files has to name the new place itself: next to the others, a wrong one goes unnoticed.
function(check_prefixes)
    file(GLOB packages ${prefix}/${libFolder}/pkgconfig/*.pc)
    if(NOT packages)
        message(FATAL_ERROR "No file for pkg-config is installed.")
    endif()
    foreach(package IN LISTS packages)
        get_filename_component(name ${package} NAME_WE)
        ask(named pkg-config --variable=prefix ${name})
        string(REPLACE "\\ " " " named "${named}")
        file(REAL_PATH "${named}" named)
        file(REAL_PATH "${prefix}" wanted)
        if(NOT named STREQUAL wanted)
            message(FATAL_ERROR "${package} names the prefix ${named}")
        endif()
    endforeach()
endfunction()

# The pages and the tool come along; the tool finds the libraries beside it, whatever is in the
# surroundings.
function(check_tool)
    if(NOT EXISTS ${prefix}/${docFolder}/README.md)
        message(FATAL_ERROR "The README is not installed in ${docFolder}.")
    endif()
    if(tool)
        file(WRITE ${scratch}/hello.lua "print('hello from ' .. _VERSION)")
        ask(greeting ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH
            ${prefix}/${tool} run ${scratch}/hello.lua)
        if(NOT greeting STREQUAL "hello from Lua 5.1")
            message(FATAL_ERROR "The installed tool printed '${greeting}'")
        endif()
    endif()
endfunction()

if(consumer STREQUAL "pkgConfig")
    check_prefixes()
    run_consumer(pkgConfig ${scratch}/build)
else()
    check_tool()
    foreach(config IN ITEMS Debug Release)
        run_consumer(findPackage "${scratch}/${config} build"
            -D CMAKE_BUILD_TYPE=${config}
            -D CMAKE_PREFIX_PATH=${prefix}
            -D wantedVersion=${version})
    endforeach()
endif()

file(REMOVE_RECURSE ${scratch})
