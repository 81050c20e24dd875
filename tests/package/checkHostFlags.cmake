# A host that was built in another way than the library works, or the linker says why it cannot.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(GLOB folders ${library}/include ${library}/platform/*/include)
list(TRANSFORM folders PREPEND -I)
file(MAKE_DIRECTORY ${scratch})
cmake_path(GET file PARENT_PATH folderOfLibrary)
set(build ${compiler} -std=c++17 ${folders} ${source}/hostFlags.cpp ${file}
    -Wl,-rpath,${folderOfLibrary} -o ${scratch}/host)

# expect_running(<flag>...)
function(expect_running)
    run(${build} ${ARGN})
    ask(printed ${scratch}/host)
    if(NOT printed STREQUAL "own is nil")
        message(FATAL_ERROR "A host that is built with '${ARGN}' prints '${printed}'.")
    endif()
endfunction()

# expect_refused(<symbol that the linker misses> <flag>...)
function(expect_refused symbol)
    execute_process(COMMAND ${build} ${ARGN}
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
    if(result EQUAL 0 OR NOT errors MATCHES "undefined reference[^\n]*tbScripts::buildMark::${symbol}")
        message(FATAL_ERROR "A host that is built with '${ARGN}' misses no ${symbol}:\n${errors}")
    endif()
endfunction()

expect_running()
expect_running(-fno-rtti)
expect_refused(BUILT_WITH_GLIBCXX_DEBUG -D_GLIBCXX_DEBUG)
expect_refused(BUILT_WITHOUT_GLIBCXX_USE_CXX11_ABI -D_GLIBCXX_USE_CXX11_ABI=0)

file(REMOVE_RECURSE ${scratch})
