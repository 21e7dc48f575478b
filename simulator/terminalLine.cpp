#include "terminalLine.h"

#include <cerrno>

Bytes TerminalLine::receive()
{
    Bytes bytes(READ_BYTES);
    const ssize_t count = read(m_descriptor.get(), bytes.data(), bytes.size());
    if (count < 0 && errno != EAGAIN && errno != EINTR) failLink(address());
    // End of file on a terminal: the adapter was unplugged.
    if (count == 0) throw LinkError(address() + ": the device is gone");
    bytes.resize(count > 0 ? std::size_t(count) : 0);
    return bytes;
}

void TerminalLine::send(const Bytes& bytes)
{
    if (write(m_descriptor.get(), bytes.data(), bytes.size()) < 0 && errno != EAGAIN &&
        errno != EINTR)
        failLink(address());
}
