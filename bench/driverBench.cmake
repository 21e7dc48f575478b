# The driver's benchmarks beside other Modbus software, for scripts/bench.sh and
# scripts/instructions.sh.
function(kakb_add_bench_program name)
    add_executable(${name} ${ARGN})
    target_include_directories(${name} PRIVATE driver)
    target_link_libraries(${name} PRIVATE kakb_options)
    set_target_properties(${name} PROPERTIES CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endfunction()

kakb_add_bench_program(instructionCount driver/instructionCount.cpp driver/benchHost.cpp)
target_link_libraries(instructionCount PRIVATE kakb_driver_objects)

kakb_add_bench_program(footprint driver/footprint.cpp)
target_include_directories(footprint PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(footprint PRIVATE Qt${QT_MAJOR}::Core ${CMAKE_DL_LIBS})
add_dependencies(footprint driver)

find_package(benchmark QUIET)
if(benchmark_FOUND)
    kakb_add_bench_program(driverBench driver/benchHost.cpp driver/checksumBench.cpp
        driver/exchangeBench.cpp driver/mergeBench.cpp driver/scanBench.cpp driver/writeBench.cpp
        peers/libmodbusBench.cpp)
    target_link_libraries(driverBench PRIVATE
        kakb_driver_objects PkgConfig::MODBUS benchmark::benchmark_main)
    # Debian 12 has Qt SerialBus for Qt 5 only; without it its rows of the table say "not there".
    find_package(Qt${QT_MAJOR}SerialBus QUIET)
    if(Qt${QT_MAJOR}SerialBus_FOUND)
        target_sources(driverBench PRIVATE peers/serialBusBench.cpp)
        target_link_libraries(driverBench PRIVATE Qt${QT_MAJOR}::SerialBus)
    endif()
endif()
