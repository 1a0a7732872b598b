set(TQSVG_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tqSvg)

install(TARGETS Wm4Foundation tqSystem tqXml tqSvg
    EXPORT tqSvgTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    FILE_SET export_header DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT tqSvgTargets
    NAMESPACE tqSvg::
    DESTINATION ${TQSVG_CMAKE_DIR})

configure_package_config_file(cmake/tqSvgConfig.cmake.in
    ${PROJECT_BINARY_DIR}/tqSvgConfig.cmake
    INSTALL_DESTINATION ${TQSVG_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tqSvgConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/tqSvgConfig.cmake
    ${PROJECT_BINARY_DIR}/tqSvgConfigVersion.cmake
    DESTINATION ${TQSVG_CMAKE_DIR})

# The .pc file locates its prefix from its own folder, so a staged or moved install works.
file(RELATIVE_PATH TQSVG_PC_TO_PREFIX
    ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" TQSVG_PC_TO_PREFIX "${TQSVG_PC_TO_PREFIX}")
configure_file(cmake/tqsvg.pc.in ${PROJECT_BINARY_DIR}/tqsvg.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tqsvg.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
