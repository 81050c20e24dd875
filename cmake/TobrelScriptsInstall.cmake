# The package: headers, library, pages, and the files by which other builds find them.

include(CMakePackageConfigHelpers)

set(packageFolder ${CMAKE_INSTALL_LIBDIR}/cmake/TobrelScripts)

install(TARGETS TobrelScripts
    EXPORT TobrelScriptsTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TobrelScriptsTargets NAMESPACE Tobrel:: DESTINATION ${packageFolder})

configure_package_config_file(
    cmake/TobrelScriptsConfig.cmake.in TobrelScriptsConfig.cmake
    INSTALL_DESTINATION ${packageFolder}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(TobrelScriptsConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(
    FILES
        ${CMAKE_CURRENT_BINARY_DIR}/TobrelScriptsConfig.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/TobrelScriptsConfigVersion.cmake
        cmake/FindLuaJIT.cmake
    DESTINATION ${packageFolder})

# The relative path from the pkg-config folder up to the prefix: a file with the configured prefix would
# be wrong for a tree that was installed or moved elsewhere.
file(RELATIVE_PATH prefixFromPc /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" prefixFromPc "${prefixFromPc}")
configure_file(cmake/tobrelscripts.pc.in tobrelscripts.pc @ONLY)
install(
    FILES ${CMAKE_CURRENT_BINARY_DIR}/tobrelscripts.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The pages keep their relative places, so that their links work.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
if(EXISTS ${PROJECT_SOURCE_DIR}/LICENSE)
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
