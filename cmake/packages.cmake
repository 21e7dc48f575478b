# The tools' place in an installed tree, and three Debian packages: library, development files, tools.
# scripts/packages.sh configures for /usr, builds, and runs cpack.

set(KAKB_PACKAGE_driver libquorvane-ka-kb-plc)
set(KAKB_PACKAGE_development libquorvane-ka-kb-plc-dev)
set(KAKB_PACKAGE_tools quorvane-ka-kb-tools)
set(KAKB_PACKAGING_DIR ${PROJECT_SOURCE_DIR}/packaging)
set(KAKB_COMPRESSED_DIR ${PROJECT_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${KAKB_COMPRESSED_DIR})
find_program(GZIP gzip REQUIRED)

# The packages' version is the project's, not the driver's own; their revision is that of the newest
# entry.
set(CPACK_PACKAGE_VERSION ${KAKB_PROJECT_VERSION})
file(STRINGS ${KAKB_PACKAGING_DIR}/changelog KAKB_NEWEST LIMIT_COUNT 1)
string(REGEX MATCH "-([^-)]+)\\)" KAKB_NEWEST ${KAKB_NEWEST})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})

# kakb_compress(FILE RESULT): without the file's name and time, so that each build makes the same.
function(kakb_compress file result)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    execute_process(COMMAND ${GZIP} -9nc ${file} OUTPUT_FILE ${result} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

if(KAKB_BUILD_KIT)
    install(TARGETS kakb-host kakb-sim RUNTIME COMPONENT tools)
    install(FILES ${PROJECT_SOURCE_DIR}/demo/tags.csv
        DESTINATION ${KAKB_DATA_FOLDER} COMPONENT tools)
    foreach(tool IN ITEMS kakb-host kakb-sim)
        set(KAKB_PAGE ${KAKB_COMPRESSED_DIR}/${tool}.1.gz)
        kakb_compress(${PROJECT_SOURCE_DIR}/docs/man/${tool}.1 ${KAKB_PAGE})
        install(FILES ${KAKB_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
        install(FILES ${PROJECT_SOURCE_DIR}/completions/${tool}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    endforeach()
endif()

# What only a Debian package has. The full installation leaves it out.
foreach(component IN ITEMS driver development tools)
    set(KAKB_DOCUMENTS ${CMAKE_INSTALL_DATADIR}/doc/${KAKB_PACKAGE_${component}})
    install(FILES ${KAKB_COMPRESSED_DIR}/changelog.Debian.gz
        ${KAKB_PACKAGING_DIR}/copyright
        DESTINATION ${KAKB_DOCUMENTS} COMPONENT ${component} EXCLUDE_FROM_ALL)
    set(KAKB_OVERRIDES ${KAKB_PACKAGING_DIR}/${KAKB_PACKAGE_${component}}.lintian-overrides)
    install(FILES ${KAKB_OVERRIDES} RENAME ${KAKB_PACKAGE_${component}}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
kakb_compress(${KAKB_PACKAGING_DIR}/changelog
    ${KAKB_COMPRESSED_DIR}/changelog.Debian.gz)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvane-ka-kb)
set(CPACK_PACKAGE_CONTACT "The quorvane ka_kb driver authors <authors@quorvane.example>")
set(CPACK_COMPONENTS_ALL driver development tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(KAKB_DRIVER_DEPENDENCY
    "${KAKB_PACKAGE_driver} (= ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
if(QT_MAJOR EQUAL 5)
    set(KAKB_QT_DEVELOPMENT qtbase5-dev)
else()
    set(KAKB_QT_DEVELOPMENT qt6-base-dev)
endif()

set(CPACK_DEBIAN_DRIVER_PACKAGE_NAME ${KAKB_PACKAGE_driver})
set(CPACK_DEBIAN_DRIVER_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DRIVER_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DRIVER_PACKAGE_CONTROL_EXTRA ${KAKB_PACKAGING_DIR}/triggers)
set(CPACK_COMPONENT_DRIVER_DESCRIPTION "Modbus RTU driver for the quorvane ka_kb controllers
The shared library that the runtime of an operator panel opens by its file
name, to talk with quorvane ka_kb controllers over a serial line or a network
link. It owns no port, timer or thread: its host asks for requests, sends
them, and hands back the replies.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${KAKB_PACKAGE_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${KAKB_DRIVER_DEPENDENCY}, ${KAKB_QT_DEVELOPMENT}")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Modbus RTU driver for the quorvane ka_kb controllers (development)
What a host of the driver is built with: the header, which is the driver's
manual, the static exchange library, which keeps a link honest without any
I/O of its own, a CMake package, and pkg-config files.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${KAKB_PACKAGE_tools})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${KAKB_DRIVER_DEPENDENCY}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "host and simulated PLC for the quorvane ka_kb driver
kakb-host watches, reads and writes the variables of a quorvane ka_kb
controller, transfers recipes and shows every frame, on a serial port or a
network link. kakb-sim is a simulated controller with faults at a rate.")

include(CPack)
