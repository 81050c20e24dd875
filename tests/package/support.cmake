# What the scripts of this folder have in common.
cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Runs a command and gives what it prints, without the end of the last line.
function(ask result)
    execute_process(
        COMMAND ${ARGN}
        COMMAND_ECHO STDOUT
        OUTPUT_VARIABLE output
        OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    set(${result} "${output}" PARENT_SCOPE)
endfunction()

# What every project of a host is configured with.
set(hostArguments
    -G ${generator}
    -D CMAKE_MAKE_PROGRAM=${makeProgram}
    -D CMAKE_CXX_COMPILER=${compiler}
    -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)

# Configures, builds and runs the consumer in folder `name`.
function(run_consumer name build)
    run(${CMAKE_COMMAND} -S ${source}/${name} -B ${build} ${hostArguments} ${ARGN})
    run(${CMAKE_COMMAND} --build ${build})
    run(${build}/consumer)
endfunction()
