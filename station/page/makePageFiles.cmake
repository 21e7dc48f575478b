# Makes a C++ file with the page's files, each as it is and as gzip.
# usage: cmake -DGZIP=PROGRAM -DOUTPUT=FILE.cpp -DFILES="FILE;FILE..." -P makePageFiles.cmake
set(TYPE_html "text/html; charset=utf-8")
set(TYPE_css "text/css; charset=utf-8")
set(TYPE_js "text/javascript; charset=utf-8")
set(TYPE_svg "image/svg+xml")

# Whole lines of comments and the blanks at the begin of a line are for who works on the source. A
# text of a script must therefore not go over several lines.
function(trimmed_copy file copy)
    file(READ ${file} text)
    string(PREPEND text "\n")
    string(REGEX REPLACE "\n[ ]*/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
    string(REGEX REPLACE "\n[ ]*//[^\n]*" "" text "${text}")
    string(REGEX REPLACE "\n[ \n]+" "\n" text "${text}")
    file(WRITE ${copy} "${text}")
endfunction()

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
    set(served ${file})
    if(NOT name MATCHES "\\.min\\." AND extension MATCHES "^(js|css)$")
        set(served ${OUTPUT}.trimmed)
        trimmed_copy(${file} ${served})
    endif()
    file(SHA256 ${served} digest)
    string(SUBSTRING ${digest} 0 16 digest)
    execute_process(COMMAND ${GZIP} -9 -n -c ${served} OUTPUT_FILE ${OUTPUT}.gz COMMAND_ERROR_IS_FATAL ANY)
    byte_array(${served} bytes)
    byte_array(${OUTPUT}.gz packed)
    string(APPEND arrays "const unsigned char BYTES_${number}[] = {\n${bytes}};\n"
        "const unsigned char PACKED_${number}[] = {\n${packed}};\n")
    string(APPEND table "        {\"${name}\", \"${TYPE_${extension}}\", \"${digest}\",\n"
        "         BYTES_${number}, sizeof BYTES_${number}, PACKED_${number}, sizeof PACKED_${number}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(REMOVE ${OUTPUT}.gz ${OUTPUT}.trimmed)
file(WRITE ${OUTPUT} "// Made by makePageFiles.cmake from the page's files.\n#include \"page/pageFile.h\"\n\n"
    "namespace {\n\n${arrays}\n} // namespace\n\n"
    "const std::vector<PageFile>& pageFiles()\n{\n    static const std::vector<PageFile> files{\n"
    "${table}    };\n    return files;\n}\n")
