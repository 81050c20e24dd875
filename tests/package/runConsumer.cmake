# Installs the library, then configures, builds and runs one consumer of it.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${scratch})
set(prefix ${scratch}/prefix)

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# The consumers find the package through the prefix alone, wherever the library was configured to go.
run(${CMAKE_COMMAND} --install ${build} --prefix ${prefix})

# Moved once more: nothing installed may remember where it was put.
file(RENAME ${prefix} ${scratch}/moved)
set(prefix ${scratch}/moved)

# The family's other libraries may come from elsewhere, so what was set before stays.
set(ENV{PKG_CONFIG_PATH} ${prefix}/${libFolder}/pkgconfig:$ENV{PKG_CONFIG_PATH})

# Each of our files has to name the new place itself: next to the others, a wrong one goes unnoticed.
function(check_prefixes)
    file(GLOB packages ${prefix}/${libFolder}/pkgconfig/*.pc)
    foreach(package IN LISTS packages)
        execute_process(
            COMMAND pkg-config --variable=prefix ${package}
            OUTPUT_VARIABLE named
            OUTPUT_STRIP_TRAILING_WHITESPACE
            COMMAND_ERROR_IS_FATAL ANY)
        file(REAL_PATH "${named}" named)
        file(REAL_PATH "${prefix}" wanted)
        if(NOT named STREQUAL wanted)
            message(FATAL_ERROR "${package} names the prefix ${named}")
        endif()
    endforeach()
endfunction()

if(consumer STREQUAL "pkgConfig")
    check_prefixes()
endif()

# The tool finds the libraries beside it.
if(tool)
    run(${prefix}/${tool} --version)
endif()

set(arguments -D CMAKE_PREFIX_PATH=${prefix})
if(consumer STREQUAL "addSubdirectory")
    set(arguments -D TOBREL_SCRIPTS_FOLDER=${library})
endif()
run(${CMAKE_COMMAND} -S ${source}/${consumer} -B ${scratch}/build -G Ninja
    -D CMAKE_CXX_COMPILER=${compiler} -D CMAKE_BUILD_TYPE=Release
    -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF ${arguments})
run(${CMAKE_COMMAND} --build ${scratch}/build)
run(${scratch}/build/consumer)

file(REMOVE_RECURSE ${scratch})
