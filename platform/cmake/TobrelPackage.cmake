# Turns a stand-in into a package: target names that are the same in the build tree and in an installed
# one, an export set, a package file and a pkg-config file.
#
# Why: docs/decisions/0007-stand-ins-as-packages.md

include_guard()
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(TOBREL_PACKAGE_TEMPLATES ${CMAKE_CURRENT_LIST_DIR})

option(TOBREL_PLATFORM_INSTALL "Install the stand-ins for the family's libraries" ON)

# tobrel_platform_package(<library> DESCRIPTION <text> HEADERS <file>... [DEPENDENCIES <library>...])
#
# Completes the target Tobrel<library>, which exists already. A library with compiled code is a
# shared one: a static one would put its statics into a process several times.
function(tobrel_platform_package library)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "HEADERS;DEPENDENCIES")
    set(target Tobrel${library})
    get_target_property(type ${target} TYPE)
    set(scope PUBLIC)
    if(type STREQUAL "INTERFACE_LIBRARY")
        set(scope INTERFACE)
    endif()

    add_library(Tobrel::${library} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${library}
        VERIFY_INTERFACE_HEADER_SETS ON)
    target_compile_features(${target} ${scope} cxx_std_17)
    target_sources(${target} ${scope} FILE_SET HEADERS BASE_DIRS include FILES ${arg_HEADERS})
    list(TRANSFORM arg_DEPENDENCIES PREPEND Tobrel OUTPUT_VARIABLE packages)
    foreach(dependency IN LISTS arg_DEPENDENCIES)
        if(NOT TARGET Tobrel::${dependency}) # when the package is built on its own
            find_package(Tobrel${dependency} REQUIRED CONFIG)
        endif()
        target_link_libraries(${target} ${scope} Tobrel::${dependency})
    endforeach()

    if(type STREQUAL "SHARED_LIBRARY")
        string(TOUPPER ${library} upper)
        target_compile_definitions(${target} PRIVATE TB${upper}_BUILDING)
        if(MINGW) # its compiler overlooks inline members of exported templates
            target_link_options(${target} PRIVATE LINKER:--export-all-symbols)
        endif()
        set_target_properties(${target} PROPERTIES
            CXX_VISIBILITY_PRESET hidden
            VISIBILITY_INLINES_HIDDEN ON
            UNITY_BUILD OFF # whatever the host that this is a part of prefers
            INSTALL_RPATH $<IF:$<PLATFORM_ID:Darwin>,@loader_path,$ORIGIN> # its dependencies lie beside it
            VERSION ${PROJECT_VERSION}
            SOVERSION ${PROJECT_VERSION_MAJOR})
        if(TARGET TobrelScriptsWarnings) # not then
            target_link_libraries(${target} PRIVATE TobrelScriptsWarnings)
        endif()
    endif()

    if(TOBREL_PLATFORM_INSTALL)
        _tobrel_install_package(${library} ${type} "${packages}" "${arg_DESCRIPTION}")
    endif()
endfunction()

function(_tobrel_install_package library type packages description)
    set(target Tobrel${library})
    set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/${target})

    install(TARGETS ${target}
        EXPORT ${target}Targets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT ${target}Targets NAMESPACE Tobrel:: DESTINATION ${folder})

    set(TOBREL_PACKAGE ${target})
    set(TOBREL_PACKAGE_DEPENDENCIES "")
    foreach(package IN LISTS packages)
        string(APPEND TOBREL_PACKAGE_DEPENDENCIES "find_dependency(${package} CONFIG)\n")
    endforeach()
    configure_package_config_file(
        ${TOBREL_PACKAGE_TEMPLATES}/TobrelPackageConfig.cmake.in ${target}Config.cmake
        INSTALL_DESTINATION ${folder}
        NO_SET_AND_CHECK_MACRO)
    write_basic_package_version_file(${target}ConfigVersion.cmake COMPATIBILITY SameMajorVersion)
    install(
        FILES
            ${CMAKE_CURRENT_BINARY_DIR}/${target}Config.cmake
            ${CMAKE_CURRENT_BINARY_DIR}/${target}ConfigVersion.cmake
        DESTINATION ${folder})

    set(TOBREL_PC_DESCRIPTION "${description}")
    string(TOLOWER "${packages}" TOBREL_PC_REQUIRES)
    list(JOIN TOBREL_PC_REQUIRES " " TOBREL_PC_REQUIRES)
    set(TOBREL_PC_LIBS "")
    if(type STREQUAL "SHARED_LIBRARY")
        set(TOBREL_PC_LIBS "-L\${libdir} -l${target}")
    endif()
    tobrel_relative_prefix(TOBREL_PC_PREFIX)
    string(TOLOWER ${target} pcName)
    configure_file(${TOBREL_PACKAGE_TEMPLATES}/package.pc.in ${pcName}.pc @ONLY)
    install(
        FILES ${CMAKE_CURRENT_BINARY_DIR}/${pcName}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# Returns the relative path from the pkg-config folder up to the prefix: a file with the configured
# prefix would be wrong for a tree that was installed or moved elsewhere.
function(tobrel_relative_prefix result)
    file(RELATIVE_PATH way /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    string(REGEX REPLACE "/$" "" way "${way}")
    set(${result} "\${pcfiledir}/${way}" PARENT_SCOPE)
endfunction()
