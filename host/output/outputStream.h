#ifndef OUTPUT_STREAM_H
#define OUTPUT_STREAM_H

#include "links/descriptor.h"

#include <cstdio>

/// Replaces a standard stream during its lifetime. Printing waits for a slow reader without a
/// limit. Once the program is to end, a reader that takes nothing for PATIENCE_MS is given up.
class OutputStream
{
public:
    enum { PATIENCE_MS = 500 };

    /// @param stream      stdout or stderr; replaced until the destructor restores it
    /// @param descriptor  borrowed; the destination of the printed bytes
    /// @param isToEnd     returns whether the program is to end
    OutputStream(std::FILE*& stream, int descriptor, bool (*isToEnd)());
    ~OutputStream();
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Prints the bytes still held. After a failure nothing more is printed.
    /// @return errno of the first failure; ETIMEDOUT: the reader was given up; 0: no failure
    int flush();

private:
    static ssize_t writeTo(void* stream, const char* bytes, size_t size);
    size_t write(const char* bytes, size_t size);
    ssize_t writeSome(const char* bytes, size_t size);
    int descriptor() const;

    std::FILE*& m_stream;
    std::FILE* const m_replaced;
    const int m_given;
    const Descriptor m_unblocked; ///< non-blocking, to the same terminal; none: no terminal
    bool (*const m_isToEnd)();
    int m_error = 0;
};

/// Whether the reading end of the descriptor is closed for good.
bool hasNoReader(int descriptor);

#endif
