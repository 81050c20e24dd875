# Gathers what a build for Windows uses of Debian's packages for this machine: libraries of headers
# only, which are the same for every system, and LuaJIT. `luajit` is the folder of its headers, and
# `library` its library for Windows; without one the build compiles and does not link.
#
# cmake -D prefix=<folder> -D luajit=<folder> [-D library=<file>] -P makePrefix.cmake
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${prefix})
file(MAKE_DIRECTORY ${prefix}/include ${prefix}/lib ${prefix}/bin)

# add_package(<name> <target> <folder of headers> [<folder that sources search, from include/>])
function(add_package name target folder)
    if(NOT IS_DIRECTORY /usr/include/${folder})
        message(FATAL_ERROR "/usr/include/${folder} is missing; .ci/packages.txt names its package.")
    endif()
    file(CREATE_LINK /usr/include/${folder} ${prefix}/include/${folder} SYMBOLIC)
    file(WRITE ${prefix}/lib/cmake/${name}/${name}Config.cmake
        "if(NOT TARGET ${target})
    add_library(${target} INTERFACE IMPORTED)
    set_target_properties(${target} PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES ${prefix}/include/${ARGN})
endif()
")
    # Debian has the version that we ask for; the build for this machine has looked.
    file(WRITE ${prefix}/lib/cmake/${name}/${name}ConfigVersion.cmake
        "set(PACKAGE_VERSION \${PACKAGE_FIND_VERSION})\nset(PACKAGE_VERSION_COMPATIBLE TRUE)\n")
endfunction()

add_package(Boost Boost::headers boost)
add_package(CLI11 CLI11::CLI11 CLI)
add_package(utf8cpp utf8cpp utf8cpp utf8cpp)

file(CREATE_LINK ${luajit} ${prefix}/include/luajit-2.1 SYMBOLIC)
if(library)
    file(COPY_FILE ${library} ${prefix}/bin/lua51.dll)
else()
    file(WRITE ${prefix}/bin/lua51.dll "") # found, and never linked
endif()
