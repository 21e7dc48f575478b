# Installs the tools, with their manual pages, completions and the demo's tag file.

install(TARGETS kakb-host kakb-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES ${PROJECT_SOURCE_DIR}/demo/tags.csv ${PROJECT_SOURCE_DIR}/demo/tank.csv
    DESTINATION ${KAKB_DATA_FOLDER})
foreach(tool IN ITEMS kakb-host kakb-sim)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/man/${tool}.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
    install(FILES ${PROJECT_SOURCE_DIR}/completions/${tool}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
endforeach()
