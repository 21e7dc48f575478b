#ifndef DESCRIPTOR_BYTES_H
#define DESCRIPTOR_BYTES_H

#include <QByteArray>

#include <sys/types.h>

// Bytes straight from and to a descriptor that does not block, past every buffer of a library's.
// What is read is then all there is, and a wait on the descriptor misses nothing.

/// What takes some of the bytes, as write(2) does.
using WriteSome = ssize_t (*)(int descriptor, const void* bytes, size_t count);

/// Hands all bytes to the system.
/// @return 0, or the errno; ETIMEDOUT when none were taken for seconds
int writeAll(int descriptor, const QByteArray& bytes, WriteSome writeSome);

/// What has come, without waiting; perhaps nothing.
/// @return 0, or the errno; ENODATA when nothing can come any more
int readAvailable(int descriptor, QByteArray& bytes);

#endif
