# Finds LuaJIT: where pkg-config says, else by a plain search for its header and library.
#
#   find_package(LuaJIT 2.1 REQUIRED)
#
# defines the target LuaJIT::LuaJIT and the variables LuaJIT_FOUND and LuaJIT_VERSION. If a target of
# that name exists, the module uses it unchanged. pkg-config may be missing.
#
# LuaJIT_ROOT and CMAKE_PREFIX_PATH point to a copy elsewhere; LuaJIT_INCLUDE_DIR and LuaJIT_LIBRARY,
# in the cache, name header folder and library directly.

include(FindPackageHandleStandardArgs)

# Reads LUAJIT_VERSION, such as "LuaJIT 2.1.0-beta3", from the first of the folders that has it.
function(_luajit_read_version result)
    foreach(folder IN LISTS ARGN)
        if(EXISTS "${folder}/luajit.h")
            file(STRINGS "${folder}/luajit.h" line REGEX "define[ \t]+LUAJIT_VERSION[ \t]")
            if(line MATCHES "\"LuaJIT ([^\"]+)\"")
                set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
                return()
            endif()
        endif()
    endforeach()
    set(${result} "" PARENT_SCOPE)
endfunction()

# A static library does not name its own dependencies.
function(_luajit_add_target)
    add_library(LuaJIT::LuaJIT UNKNOWN IMPORTED)
    set_target_properties(LuaJIT::LuaJIT PROPERTIES
        IMPORTED_LOCATION "${LuaJIT_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${LuaJIT_INCLUDE_DIR}")
    if(UNIX AND LuaJIT_LIBRARY MATCHES "\\.a$")
        set_target_properties(LuaJIT::LuaJIT PROPERTIES
            INTERFACE_LINK_LIBRARIES "m;${CMAKE_DL_LIBS}")
    endif()
endfunction()

if(TARGET LuaJIT::LuaJIT)
    # If the interpreter is a target of the same build, its header may not exist yet. The build that
    # defines the target then has to ensure its version.
    get_target_property(_luajit_folders LuaJIT::LuaJIT INTERFACE_INCLUDE_DIRECTORIES)
    _luajit_read_version(LuaJIT_VERSION ${_luajit_folders})
    set(_luajit_target LuaJIT::LuaJIT)
    set(_luajit_version_check "")
    if(LuaJIT_VERSION)
        set(_luajit_version_check VERSION_VAR LuaJIT_VERSION HANDLE_VERSION_RANGE)
    endif()
    find_package_handle_standard_args(LuaJIT
        REQUIRED_VARS _luajit_target
        ${_luajit_version_check})
    unset(_luajit_folders)
    unset(_luajit_target)
    unset(_luajit_version_check)
    return()
endif()

find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
    pkg_check_modules(PC_LuaJIT QUIET luajit)
endif()

find_path(LuaJIT_INCLUDE_DIR
    NAMES luajit.h
    HINTS ${PC_LuaJIT_INCLUDE_DIRS}
    PATH_SUFFIXES luajit-2.1 luajit
    DOC "The folder of LuaJIT's headers")
find_library(LuaJIT_LIBRARY
    NAMES ${PC_LuaJIT_LIBRARIES} luajit-5.1 luajit lua51
    HINTS ${PC_LuaJIT_LIBRARY_DIRS}
    DOC "LuaJIT's library")
mark_as_advanced(LuaJIT_INCLUDE_DIR LuaJIT_LIBRARY)
_luajit_read_version(LuaJIT_VERSION "${LuaJIT_INCLUDE_DIR}")

find_package_handle_standard_args(LuaJIT
    REQUIRED_VARS LuaJIT_LIBRARY LuaJIT_INCLUDE_DIR
    VERSION_VAR LuaJIT_VERSION
    HANDLE_VERSION_RANGE
    REASON_FAILURE_MESSAGE
        "Its development files are missing (on Debian: libluajit-5.1-dev), or their prefix is in neither LuaJIT_ROOT nor CMAKE_PREFIX_PATH")

if(LuaJIT_FOUND)
    _luajit_add_target()
endif()
