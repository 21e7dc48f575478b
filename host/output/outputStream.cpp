#include "output/outputStream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>
#include <system_error>

namespace {

enum { TURN_MS = 50 };

/// Opens the terminal a second time, non-blocking. A blocking write waits while the terminal has
/// room for only a part of the bytes. The given descriptor is not changed to non-blocking, because
/// other programs share its settings.
int unblockedTerminal(int descriptor)
{
    if (!isatty(descriptor)) return -1;
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    return open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

int bufferingOf(int descriptor)
{
    if (descriptor == STDERR_FILENO) return _IONBF;
    return isatty(descriptor) ? _IOLBF : _IOFBF;
}

} // namespace

OutputStream::OutputStream(std::FILE*& stream, int descriptor, bool (*isToEnd)())
    : m_stream(stream),
      m_replaced(stream),
      m_given(descriptor),
      m_unblocked(unblockedTerminal(descriptor)),
      m_isToEnd(isToEnd)
{
    cookie_io_functions_t functions = {};
    functions.write = writeTo;
    std::FILE* const own = fopencookie(this, "w", functions);
    if (!own) throw std::system_error(errno, std::generic_category(), "no stream");
    std::setvbuf(own, nullptr, bufferingOf(descriptor), BUFSIZ);
    m_stream = own;
}

OutputStream::~OutputStream()
{
    std::fclose(m_stream);
    m_stream = m_replaced;
}

int OutputStream::flush()
{
    std::fflush(m_stream);
    return m_error;
}

ssize_t OutputStream::writeTo(void* stream, const char* bytes, size_t size)
{
    return ssize_t(static_cast<OutputStream*>(stream)->write(bytes, size));
}

size_t OutputStream::write(const char* bytes, size_t size)
{
    size_t written = 0;
    int waitedMs = 0;
    while (written < size && m_error == 0) {
        const ssize_t count = writeSome(bytes + written, size - written);
        if (count > 0) {
            written += size_t(count);
            waitedMs = 0;
        } else if (count < 0) {
            m_error = errno;
        } else if (m_isToEnd() && (waitedMs += TURN_MS) > PATIENCE_MS) {
            m_error = ETIMEDOUT;
        }
    }
    return written;
}

/// Writes at most PIPE_BUF bytes: a pipe that is ready for writing takes so many without blocking.
/// @return number of bytes written; -1: failure; 0: no room after a wait of TURN_MS
ssize_t OutputStream::writeSome(const char* bytes, size_t size)
{
    pollfd wanted = {descriptor(), POLLOUT, 0};
    if (poll(&wanted, 1, TURN_MS) <= 0) return 0;
    const ssize_t count = ::write(descriptor(), bytes, std::min(size, size_t(PIPE_BUF)));
    return count < 0 && (errno == EINTR || errno == EAGAIN) ? 0 : count;
}

int OutputStream::descriptor() const
{
    return m_unblocked.number() >= 0 ? m_unblocked.number() : m_given;
}

bool hasNoReader(int descriptor)
{
    pollfd watched = {descriptor, 0, 0};
    return poll(&watched, 1, 0) > 0;
}
