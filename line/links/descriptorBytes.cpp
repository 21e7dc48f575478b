#include "links/descriptorBytes.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace {

const int WRITE_TIMEOUT_MS = 5000;

bool becomesWritable(int descriptor)
{
    pollfd awaited = {descriptor, POLLOUT, 0};
    return poll(&awaited, 1, WRITE_TIMEOUT_MS) != 0;
}

} // namespace

int writeAll(int descriptor, const QByteArray& bytes, WriteSome writeSome)
{
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            writeSome(descriptor, bytes.constData() + written, size_t(bytes.size() - written));
        if (count >= 0) {
            written += int(count);
        } else if (errno == EAGAIN) {
            if (!becomesWritable(descriptor)) return ETIMEDOUT;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int readAvailable(int descriptor, QByteArray& bytes)
{
    std::array<char, MOST_READ_AT_ONCE> buffer;
    const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
    if (count > 0) bytes = QByteArray(buffer.data(), int(count));
    if (count > 0) return 0;
    if (count == 0) return ENODATA;
    return errno == EAGAIN || errno == EINTR ? 0 : errno;
}
