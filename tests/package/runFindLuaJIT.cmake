# Lets a project look for the interpreter on the way that `row` names, and compares what it says.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${scratch})
set(copy "${scratch}/a  copy")

# Makes something that looks like an interpreter of that version.
function(make_copy text)
    file(WRITE "${copy}/include/luajit-2.1/luajit.h" "#define LUAJIT_VERSION\t\t\"LuaJIT ${text}\"\n")
    file(WRITE "${copy}/lib/libluajit-5.1.so" "")
endfunction()

set(noPkgConfig -D CMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON)
set(noPlainSearch
    -D CMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF
    -D CMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF)
set(installed "library: '[^\n]*libluajit[^\n]*'\n" "version: '2\\.1\\.[^']+'\n")

set(runs OFF)
if(row STREQUAL "isFoundByPkgConfig")
    set(arguments ${noPlainSearch} -D PKG_CONFIG_EXECUTABLE=${pkgConfig})
    set(expected ${installed} "found: TRUE" "second version: '2\\.1\\.")
    set(runs ON)
elseif(row STREQUAL "isFoundByPlainSearch")
    set(arguments ${noPkgConfig})
    set(expected ${installed} "found: TRUE" "second version: '2\\.1\\.")
    set(runs ON)
elseif(row STREQUAL "isFoundWherePkgConfigDoesNotRun")
    set(arguments -D PKG_CONFIG_EXECUTABLE=${scratch}/missing)
    set(expected ${installed})
elseif(row STREQUAL "isTakenFromTheRootThatIsNamed")
    make_copy(2.1.1700008891)
    set(arguments -D LuaJIT_ROOT=${copy})
    set(expected
        "library: '${copy}/lib/libluajit-5\\.1\\.so'" "folders: '${copy}/include/luajit-2\\.1'"
        "\n-- version: '2\\.1\\.1700008891'")
elseif(row STREQUAL "missingOneIsAnErrorThatSaysWhatToDo")
    set(arguments ${noPkgConfig} ${noPlainSearch})
    set(expected "Could NOT find LuaJIT" "libluajit-5\\.1-dev" "LuaJIT_ROOT")
elseif(row STREQUAL "oldOneIsAnErrorThatNamesBothVersions")
    make_copy(2.0.5)
    set(arguments -D LuaJIT_ROOT=${copy})
    set(expected "Found unsuitable version \"2\\.0\\.5\"" "at[ \n]+least \"2\\.1\"")
elseif(row STREQUAL "targetThatIsThereIsTakenOver")
    make_copy(2.1.7)
    set(arguments -D ownTarget=ON "-DownFolder=${copy}/include/luajit-2.1")
    set(expected
        "found: TRUE" "\n-- version: '2\\.1\\.7'" "library: ''" "second version: '2\\.1\\.7'"
        "folders: '${copy}/include/luajit-2\\.1'")
elseif(row STREQUAL "targetWithoutHeaderIsTakenOver")
    file(MAKE_DIRECTORY "${copy}/built later")
    set(arguments -D ownTarget=ON "-DownFolder=${copy}/built later")
    set(expected "found: TRUE" "\n-- version: ''" "library: ''")
else()
    message(FATAL_ERROR "There is no row ${row}.")
endif()

execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${source}/findLuaJIT -B ${scratch}/build ${hostArguments}
        -D moduleFolder=${library}/cmake ${arguments}
    OUTPUT_VARIABLE output
    ERROR_VARIABLE output
    RESULT_VARIABLE status)

if(row MATCHES "IsAnError")
    if(status EQUAL 0)
        message(FATAL_ERROR "That was no error:\n${output}")
    endif()
elseif(NOT status EQUAL 0)
    message(FATAL_ERROR "The search failed:\n${output}")
endif()
foreach(pattern IN LISTS expected)
    if(NOT output MATCHES "${pattern}")
        message(FATAL_ERROR "'${pattern}' is not in:\n${output}")
    endif()
endforeach()

if(runs)
    run(${CMAKE_COMMAND} --build ${scratch}/build)
    ask(printed ${scratch}/build/seeker)
    if(NOT printed MATCHES "^LuaJIT 2\\.1")
        message(FATAL_ERROR "The program was built upon '${printed}'")
    endif()
endif()

file(REMOVE_RECURSE ${scratch})
