#ifndef DESCRIPTOR_BYTES_H
#define DESCRIPTOR_BYTES_H

#include <QByteArray>

#include <sys/types.h>

// Reads and writes bytes at a non-blocking descriptor, without a library's buffer in between. No
// received byte is left in a buffer, where a wait on the descriptor would miss it.

/// A function that writes some of the bytes, with the result of write(2).
using WriteSome = ssize_t (*)(int descriptor, const void* bytes, size_t count);

/// Hands all bytes to the system. It waits while the system has no room.
/// @return 0, or the errno; ETIMEDOUT when the system took no byte for several seconds
int writeAll(int descriptor, const QByteArray& bytes, WriteSome writeSome);

enum { MOST_READ_AT_ONCE = 4096 };

/// Reads the bytes that have come, without waiting, at most MOST_READ_AT_ONCE. `bytes` may stay
/// empty.
/// @return 0, or the errno; ENODATA when no more bytes can come
int readAvailable(int descriptor, QByteArray& bytes);

#endif
