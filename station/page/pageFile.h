#ifndef PAGE_FILE_H
#define PAGE_FILE_H

#include <cstddef>
#include <vector>

/// A file of the page, compiled into the program. All pointers are to constants.
struct PageFile
{
    const char* name;        ///< "index.html"
    const char* contentType; ///< "text/html; charset=utf-8"
    const char* digest;      ///< of the bytes: changes when they do
    const unsigned char* bytes;
    size_t size;
    const unsigned char* packed; ///< the bytes as gzip
    size_t packedSize;
};

/// All files of the page. The build makes this function, see makePageFiles.cmake.
const std::vector<PageFile>& pageFiles();

#endif
