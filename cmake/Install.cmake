# Installs the library, its headers, and what find_package(morvaqnds) and pkg-config need to find them.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/morvaqnds)

install(TARGETS morvaqnds EXPORT morvaqndsTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES ${MORVAQNDS_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morvaqnds)
install(EXPORT morvaqndsTargets NAMESPACE morvaqnds:: DESTINATION ${package_dir})

configure_package_config_file(cmake/morvaqndsConfig.cmake.in morvaqndsConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(morvaqndsConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/morvaqndsConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/morvaqndsConfigVersion.cmake
    DESTINATION ${package_dir})

# The .pc file finds the prefix from its own place, so that an installed tree can be moved, unless the library's
# directory is outside the prefix.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
set(pc_libdir ${CMAKE_INSTALL_FULL_LIBDIR})
set(pc_includedir ${CMAKE_INSTALL_FULL_INCLUDEDIR})
if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" AND NOT IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    file(RELATIVE_PATH up /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
    string(REGEX REPLACE "/$" "" up "${up}")
    set(pc_prefix "\${pcfiledir}/${up}")
    set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
    set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
set(pc_definitions "")
if(MORVAQNDS_CHECKED)
    set(pc_definitions " -DMORVAQNDS_CHECKED")
endif()
configure_file(cmake/morvaqnds.pc.in morvaqnds.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/morvaqnds.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
