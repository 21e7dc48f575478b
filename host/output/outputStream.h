#ifndef OUTPUT_STREAM_H
#define OUTPUT_STREAM_H

#include "links/descriptor.h"

#include <cstdio>

/// Takes the place of a standard stream for as long as it lives. Its reader may take all the time
/// in the world, but once the program is to end, one who takes nothing is given up.
class OutputStream
{
public:
    enum { PATIENCE_MS = 500 };

    /// @param stream      stdout or stderr; it is what to print to all the while
    /// @param descriptor  borrowed; what is printed goes there
    /// @param isToEnd     whether the program is to end
    OutputStream(std::FILE*& stream, int descriptor, bool (*isToEnd)());
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Prints what is still held. After a failure nothing is printed any more.
    /// @return errno of the first failure, ETIMEDOUT of a reader who was given up; 0: none
    int flush();

private:
    static ssize_t writeTo(void* stream, const char* bytes, size_t size);
    size_t write(const char* bytes, size_t size);
    ssize_t writeSome(const char* bytes, size_t size);
    int descriptor() const;

    std::FILE*& m_stream;
    std::FILE* const m_replaced;
    const int m_given;
    const Descriptor m_unblocked; ///< to the same terminal; else none
    bool (*const m_isToEnd)();
    int m_error = 0;
};

/// Nobody reads there any more, and nobody will.
bool hasNoReader(int descriptor);

#endif
