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

# In the .pc file, a directory outside the prefix is written out in full; others follow the prefix.
set(pc_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(pc_libdir "${CMAKE_INSTALL_LIBDIR}")
endif()
set(pc_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
    set(pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
endif()
set(pc_definitions "")
if(MORVAQNDS_CHECKED)
    set(pc_definitions " -DMORVAQNDS_CHECKED")
endif()
configure_file(cmake/morvaqnds.pc.in morvaqnds.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/morvaqnds.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
