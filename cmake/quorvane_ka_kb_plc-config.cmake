# Gives the targets quorvane_ka_kb_plc::driver and quorvane_ka_kb_plc::line, built with the major version
# of Qt that the project uses: QT_DEFAULT_MAJOR_VERSION, else the Qt that the project has found, else
# the first of 5 and 6 that is installed.
include(CMakeFindDependencyMacro)

set(quorvane_ka_kb_plc_QT "")
if(DEFINED QT_DEFAULT_MAJOR_VERSION)
    set(quorvane_ka_kb_plc_QT ${QT_DEFAULT_MAJOR_VERSION})
elseif(TARGET Qt6::Core)
    set(quorvane_ka_kb_plc_QT 6)
elseif(TARGET Qt5::Core)
    set(quorvane_ka_kb_plc_QT 5)
elseif(DEFINED QT_VERSION_MAJOR)
    set(quorvane_ka_kb_plc_QT ${QT_VERSION_MAJOR})
else()
    foreach(quorvane_ka_kb_plc_major IN ITEMS 5 6)
        if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/quorvane_ka_kb_plc-qt${quorvane_ka_kb_plc_major}-targets.cmake)
            find_package(Qt${quorvane_ka_kb_plc_major} QUIET COMPONENTS Core)
            if(Qt${quorvane_ka_kb_plc_major}_FOUND)
                set(quorvane_ka_kb_plc_QT ${quorvane_ka_kb_plc_major})
                break()
            endif()
        endif()
    endforeach()
endif()

set(quorvane_ka_kb_plc_targets
    ${CMAKE_CURRENT_LIST_DIR}/quorvane_ka_kb_plc-qt${quorvane_ka_kb_plc_QT}-targets.cmake)
if(NOT EXISTS ${quorvane_ka_kb_plc_targets})
    set(quorvane_ka_kb_plc_FOUND FALSE)
    set(quorvane_ka_kb_plc_NOT_FOUND_MESSAGE
        "no driver for the Qt of this project (\"${quorvane_ka_kb_plc_QT}\") beside ${CMAKE_CURRENT_LIST_FILE}, or no Qt")
    return()
endif()
find_dependency(Qt${quorvane_ka_kb_plc_QT} COMPONENTS Core)
include(${quorvane_ka_kb_plc_targets})
