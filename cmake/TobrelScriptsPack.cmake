# `cpack` builds one Debian package from all installed files: a host needs headers, library and
# stand-ins of the same build, and the tool is small.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tobrelscripts)
set(CPACK_PACKAGE_VENDOR TobrelScripts)
set(CPACK_PACKAGE_CONTACT "TobrelScripts <tobrelscripts@example.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

# The umask of the user who packs must not matter.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "scripting layer for host applications, with its tool")
set(CPACK_PACKAGE_DESCRIPTION
"A C++17 library with which a host compiles and runs Lua scripts, offers them its
functions and types and calls theirs, with typed values in both directions and
errors that never reach it as exceptions. Headers, shared library, package files
for CMake and pkg-config, and tbscripts, which runs, checks and packs scripts.")

# `dpkg-shlibdeps` reads the dependencies from the files. Libraries of this package need no other one.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY =)

include(CPack)
