# Makes a C++ file with the page's files, each as it is and as gzip.
# usage: cmake -DGZIP=PROGRAM -DOUTPUT=FILE.cpp -DFILES="FILE;FILE..." -P makePageFiles.cmake
set(TYPE_html "text/html; charset=utf-8")
set(TYPE_css "text/css; charset=utf-8")
set(TYPE_js "text/javascript; charset=utf-8")
set(TYPE_svg "image/svg+xml")

# byte_array(FILE OUT): the file's bytes as C++ numbers, in lines that an editor can show.
function(byte_array file out)
    file(READ ${file} text HEX)
    string(REGEX REPLACE "(................................)" "\\1\n" text "${text}")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," text "${text}")
    set(${out} "${text}" PARENT_SCOPE)
endfunction()

set(arrays)
set(table)
set(number 0)
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    get_filename_component(extension ${file} LAST_EXT)
    string(SUBSTRING ${extension} 1 -1 extension)
    if(NOT DEFINED TYPE_${extension})
        message(FATAL_ERROR "${name}: a file of the page has no type for .${extension}")
    endif()
    file(SHA256 ${file} digest)
    string(SUBSTRING ${digest} 0 16 digest)
    execute_process(COMMAND ${GZIP} -9 -n -c ${file} OUTPUT_FILE ${OUTPUT}.gz COMMAND_ERROR_IS_FATAL ANY)
    byte_array(${file} bytes)
    byte_array(${OUTPUT}.gz packed)
    string(APPEND arrays "const unsigned char BYTES_${number}[] = {\n${bytes}};\n"
        "const unsigned char PACKED_${number}[] = {\n${packed}};\n")
    string(APPEND table "        {\"${name}\", \"${TYPE_${extension}}\", \"${digest}\",\n"
        "         BYTES_${number}, sizeof BYTES_${number}, PACKED_${number}, sizeof PACKED_${number}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(REMOVE ${OUTPUT}.gz)
file(WRITE ${OUTPUT} "// Made by makePageFiles.cmake from the page's files.\n#include \"page/pageFile.h\"\n\n"
    "namespace {\n\n${arrays}\n} // namespace\n\n"
    "const std::vector<PageFile>& pageFiles()\n{\n    static const std::vector<PageFile> files{\n"
    "${table}    };\n    return files;\n}\n")
