# Installs the driver, the header that a host includes, the exchange library, a CMake package and
# pkg-config files. What depends on Qt has Qt's major version in its name or folder, so that the trees
# of Qt 5 and Qt 6 can be installed into one prefix:
#
#   lib/quorvane-ka-kb/qt5/libquorvane_ka_kb_plc.so     what panels open, by its path
#   lib/libquorvane_ka_kb_plc.so                        a link to it for panels that open it by name
#   lib/libquorvane_ka_kb_plc-qt5.so -> .so.1           what hosts link
#   lib/libquorvane_ka_kb_line-qt5.a                    the exchange library
#   lib/pkgconfig/quorvane_ka_kb_plc-qt5.pc             and a link to it without "-qt5"
#   lib/cmake/quorvane_ka_kb_plc/                       takes the Qt of the project that asks
#
# With KAKB_PLAIN_NAMES off the links without Qt's version are left out: of two trees in one prefix,
# one has them.

set(KAKB_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/quorvane_ka_kb_plc)

install(TARGETS driver LIBRARY DESTINATION ${KAKB_DRIVER_FOLDER})
install(TARGETS driver_library kakb_line EXPORT quorvane_ka_kb_plc_targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY line/wire line/exchange
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quorvane_ka_kb_line
    FILES_MATCHING PATTERN "*.h")
install(FILES include/quorvane_ka_kb_plc.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT quorvane_ka_kb_plc_targets
    NAMESPACE quorvane_ka_kb_plc::
    FILE quorvane_ka_kb_plc-qt${QT_MAJOR}-targets.cmake
    DESTINATION ${KAKB_PACKAGE_DIR})

write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    cmake/quorvane_ka_kb_plc-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/quorvane_ka_kb_plc-config-version.cmake
    DESTINATION ${KAKB_PACKAGE_DIR})

# kakb_install_link(NAME FOLDER TARGET): a symbolic link, whose target is relative to the folder.
function(kakb_install_link name folder target)
    set(link ${CMAKE_CURRENT_BINARY_DIR}/links/${name})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/links)
    file(CREATE_LINK ${target} ${link} SYMBOLIC)
    install(FILES ${link} DESTINATION ${folder})
endfunction()

# Found from where the file lies, so that the tree can be moved.
file(RELATIVE_PATH KAKB_PREFIX_FROM_PC
    /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
foreach(package IN ITEMS quorvane_ka_kb_plc quorvane_ka_kb_line)
    set(file ${package}-qt${QT_MAJOR}.pc)
    configure_file(cmake/${package}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${file} @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${file}
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
    if(KAKB_PLAIN_NAMES)
        kakb_install_link(${package}.pc ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${file})
    endif()
endforeach()
if(KAKB_PLAIN_NAMES)
    kakb_install_link(libquorvane_ka_kb_plc.so ${CMAKE_INSTALL_LIBDIR}
        quorvane-ka-kb/qt${QT_MAJOR}/libquorvane_ka_kb_plc.so)
endif()
