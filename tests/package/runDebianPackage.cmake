# Makes the Debian package, reads what it says about itself, unpacks it and runs the tool from there.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/support.cmake)

file(REMOVE_RECURSE ${scratch})
run(${cpack} -G DEB --config ${build}/CPackConfig.cmake -B ${scratch})
file(GLOB package ${scratch}/*.deb)

# check_field(<name> <pattern>)
function(check_field name pattern)
    ask(value dpkg-deb --field ${package} ${name})
    if(NOT value MATCHES "${pattern}")
        message(FATAL_ERROR "The package's ${name} is '${value}'")
    endif()
endfunction()

string(REPLACE "." "\\." versionPattern "${version}")
check_field(Package "^tobrelscripts$")
check_field(Version "^${versionPattern}$")
check_field(Section "^devel$")
check_field(Maintainer "^TobrelScripts <tobrelscripts@example\\.invalid>$")
check_field(Description "^scripting layer for host applications, with its tool\n ")
check_field(Depends "libc6 \\(>= .*libluajit.*libstdc\\+\\+6 \\(>= ")

# What it brings it must not ask for, and its own build is the only one that fits.
ask(depends dpkg-deb --field ${package} Depends)
if(depends MATCHES "tobrel")
    message(FATAL_ERROR "The package depends on itself: ${depends}")
endif()

# The folders are everybody's to read, whatever the umask was.
ask(contents dpkg-deb --contents ${package})
if(NOT contents MATCHES "drwxr-xr-x root/root [^\n]* \\./usr/bin/\n")
    message(FATAL_ERROR "The package's folders are not those of a system:\n${contents}")
endif()

# Other packages that link the library depend on this very build of it, by its name at run time.
run(dpkg-deb --control ${package} ${scratch}/control)
file(STRINGS ${scratch}/control/shlibs shlibs REGEX "^libTobrelScripts ")
string(REGEX MATCH "^(0\\.[0-9]+|[1-9][0-9]*)" runtimeVersion ${version})
if(NOT shlibs STREQUAL "libTobrelScripts ${runtimeVersion} tobrelscripts (= ${version})")
    message(FATAL_ERROR "The package says of the library: '${shlibs}'")
endif()

set(root "${scratch}/unpacked  here")
run(dpkg-deb -x ${package} ${root})
foreach(file IN ITEMS
        bin/tbscripts include/tbScripts/Environment.h
        ${libFolder}/libTobrelScripts.so ${libFolder}/pkgconfig/tobrelscripts.pc
        ${libFolder}/cmake/TobrelScripts/TobrelScriptsConfig.cmake
        ${libFolder}/cmake/TobrelScripts/FindLuaJIT.cmake)
    if(NOT EXISTS ${root}/usr/${file})
        message(FATAL_ERROR "The package does not hold usr/${file}.")
    endif()
endforeach()

if(hasManPage)
    ask(page gzip -dc ${root}/usr/share/man/man1/tbscripts.1.gz)
    foreach(heading IN ITEMS NAME "\"TBSCRIPTS RUN\"" "\"TBSCRIPTS LIST\"" EXAMPLES)
        if(NOT page MATCHES "\n\\.SH ${heading}\n")
            message(FATAL_ERROR "The man page has no section ${heading}:\n${page}")
        endif()
    endforeach()
endif()

# With nothing in its surroundings that could lead it to its libraries.
file(WRITE ${scratch}/hello.lua "print('hello from ' .. _VERSION)")
ask(greeting env -i ${root}/usr/bin/tbscripts run ${scratch}/hello.lua)
if(NOT greeting STREQUAL "hello from Lua 5.1")
    message(FATAL_ERROR "The packaged tool printed '${greeting}'")
endif()

file(REMOVE_RECURSE ${scratch})
