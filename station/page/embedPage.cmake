# The page's files and its plot library as a C++ file: the program reads nothing from disk for them.
find_path(KAKB_DYGRAPHS_FOLDER dygraph.min.js
    PATHS /usr/share/javascript/dygraphs DOC "Folder of libjs-dygraphs" REQUIRED)
find_program(KAKB_GZIP gzip REQUIRED)
file(GLOB KAKB_PAGE_FILES CONFIGURE_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/files/*)
list(APPEND KAKB_PAGE_FILES
    ${KAKB_DYGRAPHS_FOLDER}/dygraph.min.js ${KAKB_DYGRAPHS_FOLDER}/dygraph.min.css)

set(KAKB_PAGE_SOURCE ${CMAKE_CURRENT_BINARY_DIR}/page/pageFiles.cpp)
add_custom_command(OUTPUT ${KAKB_PAGE_SOURCE}
    COMMAND ${CMAKE_COMMAND} -DGZIP=${KAKB_GZIP} -DOUTPUT=${KAKB_PAGE_SOURCE} "-DFILES=${KAKB_PAGE_FILES}"
        -P ${CMAKE_CURRENT_LIST_DIR}/makePageFiles.cmake
    DEPENDS ${KAKB_PAGE_FILES} ${CMAKE_CURRENT_LIST_DIR}/makePageFiles.cmake
    COMMENT "Compiling in the page"
    VERBATIM)
