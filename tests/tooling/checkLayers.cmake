# The folders of src/ depend on each other in one direction, only lua/ folders know Lua, and only
# src/port knows the platform.
cmake_minimum_required(VERSION 3.25)

set(mayInclude_core core port)
set(mayInclude_port port)
set(mayInclude_scripts scripts core port)
set(mayInclude_bindings bindings core port)
set(mayInclude_environments environments bindings scripts core port)
set(mayInclude_loading loading scripts core port)

# Headers that not every platform has, or whose functions and types differ between platforms.
set(platformHeaders
    "^(unistd|fcntl|pthread|signal|dlfcn|locale|poll|spawn|sched|termios|pwd|grp|cxxabi|wchar|execinfo)\\.h$"
    "^(windows|io|process|direct|conio)\\.h$" "^csignal$" "^(sys|mach|linux|netinet)/")
list(JOIN platformHeaders "|" platformHeaders)

set(problems "")

function(check_include file folder line)
    if(NOT line MATCHES "#[ \t]*include[ \t]*[<\"]([^>\"]+)[>\"]")
        return()
    endif()
    set(included "${CMAKE_MATCH_1}")
    set(reason "")
    if(included MATCHES "(^|/)(lua|lualib|lauxlib|luajit)\\.(h|hpp)$")
        if(NOT file STREQUAL "src/core/lua/LuaApi.h")
            set(reason "only src/core/lua/LuaApi.h includes the interpreter's headers")
        endif()
    elseif(included MATCHES "^[a-z]+/(.*/)?lua/|^lua/" AND NOT file MATCHES "/lua/")
        # A front creates its back-end, and that is all that it may know of it.
        get_filename_component(name ${included} NAME)
        if(NOT name MATCHES "^Lua[A-Za-z]*(Strategy|Factory)\\.h$")
            set(reason "outside a lua/ folder")
        endif()
    elseif(included MATCHES "${platformHeaders}" AND NOT file MATCHES "^src/port/")
        set(reason "only src/port includes headers of a platform")
    elseif(included MATCHES "^port/(posix|windows)/" AND NOT file MATCHES "^src/port/(posix|windows)/")
        set(reason "of one platform")
    elseif(included MATCHES "platform/|(^|/)\\.\\./")
        set(reason "a path around the include folders")
    endif()
    if(included MATCHES "^([a-z]+)/")
        set(target "${CMAKE_MATCH_1}")
        if(DEFINED mayInclude_${target} AND NOT target IN_LIST mayInclude_${folder})
            set(reason "${folder} may not include ${target}")
        endif()
    endif()
    if(NOT reason STREQUAL "")
        set(problems "${problems}  ${file}: ${included} (${reason})\n" PARENT_SCOPE)
    endif()
endfunction()

file(GLOB_RECURSE files RELATIVE ${root} ${root}/src/*.h ${root}/src/*.cpp)
foreach(file IN LISTS files)
    string(REGEX REPLACE "^src/([^/]+)/.*" "\\1" folder ${file})
    if(NOT DEFINED mayInclude_${folder})
        string(APPEND problems "  ${file}: no rule for this folder\n")
        continue()
    endif()
    file(STRINGS ${root}/${file} lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
        check_include(${file} ${folder} "${line}")
    endforeach()
endforeach()

# A host needs no interpreter headers and sees nothing of src/, nor of a certain interpreter.
file(GLOB_RECURSE files RELATIVE ${root} ${root}/include/*.h)
foreach(file IN LISTS files)
    file(STRINGS ${root}/${file} lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
        if(line MATCHES "[<\"/](lua|lualib|lauxlib|luajit)\\.(h|hpp)[>\"]"
            OR line MATCHES "\"" AND NOT line MATCHES "\"tbScripts/")
            string(APPEND problems "  ${file}: ${line}\n")
        endif()
    endforeach()
    file(STRINGS ${root}/${file} lines
        REGEX "(^|[^A-Za-z0-9_])lua[ \t]*::|namespace[ \t]+([A-Za-z0-9_]+[ \t]*::[ \t]*)*lua([^A-Za-z0-9_]|$)")
    foreach(line IN LISTS lines)
        string(APPEND problems "  ${file}: ${line} (names the interpreter's side)\n")
    endforeach()
endforeach()

# The command-line tool is a host too. It shares what differs between platforms with the library, and
# the printing of tables with the benchmarks.
file(GLOB_RECURSE files RELATIVE ${root} ${root}/tools/*.h ${root}/tools/*.cpp)
foreach(file IN LISTS files)
    file(STRINGS ${root}/${file} lines REGEX "^[ \t]*#[ \t]*include")
    foreach(line IN LISTS lines)
        if(line MATCHES "[<\"/](lua|lualib|lauxlib|luajit)\\.(h|hpp)[>\"]"
            OR line MATCHES "\"" AND NOT line MATCHES "\"(tbscripts|tables|port)/[A-Za-z]+\\.h\"")
            string(APPEND problems "  ${file}: ${line}\n")
        elseif(line MATCHES "<([^>]+)>")
            set(included "${CMAKE_MATCH_1}")
            if(included MATCHES "${platformHeaders}")
                string(APPEND problems
                    "  ${file}: ${included} (only src/port includes headers of a platform)\n")
            endif()
        endif()
    endforeach()
endforeach()

if(NOT problems STREQUAL "")
    message(FATAL_ERROR "Against the layers:\n${problems}")
endif()
