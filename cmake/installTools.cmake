# Installs the tools, with their manual pages, completions, the demo's tag files, and an example of the
# station's configuration.

install(TARGETS kakb-host kakb-sim kakb-station RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/demo/tags.csv ${PROJECT_SOURCE_DIR}/demo/tank.csv
    ${PROJECT_SOURCE_DIR}/demo/station.toml
    DESTINATION ${KAKB_DATA_FOLDER})
foreach(tool IN ITEMS kakb-host kakb-sim kakb-station)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/man/${tool}.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${PROJECT_SOURCE_DIR}/completions/${tool}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
