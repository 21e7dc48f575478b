# The classes that protoc makes of sparkplug.proto, as the library kakb_sparkplug_messages. They are
# compiled without the project's warnings, and their header counts as a system's.
find_package(PkgConfig REQUIRED)
pkg_check_modules(PROTOBUF_LITE REQUIRED IMPORTED_TARGET protobuf-lite)
# It runs on the machine that builds, also when the station is built for another processor.
find_program(KAKB_PROTOC protoc REQUIRED)

set(KAKB_SPARKPLUG_FOLDER ${CMAKE_CURRENT_BINARY_DIR}/sparkplugMessages)
file(MAKE_DIRECTORY ${KAKB_SPARKPLUG_FOLDER})
add_custom_command(
    OUTPUT ${KAKB_SPARKPLUG_FOLDER}/sparkplug.pb.cc ${KAKB_SPARKPLUG_FOLDER}/sparkplug.pb.h
    COMMAND ${KAKB_PROTOC} --proto_path=${CMAKE_CURRENT_LIST_DIR}
        --cpp_out=${KAKB_SPARKPLUG_FOLDER} ${CMAKE_CURRENT_LIST_DIR}/sparkplug.proto
    DEPENDS ${CMAKE_CURRENT_LIST_DIR}/sparkplug.proto
    COMMENT "Making the Sparkplug messages")
add_library(kakb_sparkplug_messages STATIC ${KAKB_SPARKPLUG_FOLDER}/sparkplug.pb.cc)
target_include_directories(kakb_sparkplug_messages SYSTEM PUBLIC ${KAKB_SPARKPLUG_FOLDER})
target_link_libraries(kakb_sparkplug_messages PUBLIC PkgConfig::PROTOBUF_LITE)
set_target_properties(kakb_sparkplug_messages PROPERTIES
    POSITION_INDEPENDENT_CODE ON CXX_STANDARD 17 CXX_STANDARD_REQUIRED ON)
