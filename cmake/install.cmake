# Installs the driver, the header that a host includes, a CMake package and a pkg-config file. The
# components are those of packages.cmake.

set(KAKB_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/quorvane_ka_kb_plc)
# What the tools read; the host looks for it from its own folder.
set(KAKB_DATA_FOLDER ${CMAKE_INSTALL_DATADIR}/quorvane-ka-kb)

install(TARGETS driver EXPORT quorvane_ka_kb_plc_targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT driver)
# The exchange library, for hosts that link it.
install(TARGETS kakb_line EXPORT quorvane_ka_kb_plc_targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY line/wire line/exchange
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorvane_ka_kb_line COMPONENT development
    FILES_MATCHING PATTERN "*.h")
install(FILES include/quorvane_ka_kb_plc.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)
install(EXPORT quorvane_ka_kb_plc_targets
    NAMESPACE quorvane_ka_kb_plc::
    FILE quorvane_ka_kb_plc-targets.cmake
    DESTINATION ${KAKB_PACKAGE_DIR} COMPONENT development)

configure_package_config_file(cmake/quorvane_ka_kb_plc-config.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config.cmake
    INSTALL_DESTINATION ${KAKB_PACKAGE_DIR})
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config-version.cmake
    DESTINATION ${KAKB_PACKAGE_DIR} COMPONENT development)

# Found from where the file lies, so that the tree can be moved.
file(RELATIVE_PATH KAKB_PREFIX_FROM_PC
    /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
foreach(package IN ITEMS quorvane_ka_kb_plc quorvane_ka_kb_line)
    configure_file(cmake/${package}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
