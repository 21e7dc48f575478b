#ifndef TERMINAL_PAIR_H
#define TERMINAL_PAIR_H

#include "lineEnd.h"
#include "uniqueDescriptor.h"

#include <fcntl.h>
#include <pty.h>
#include <termios.h>

#include <climits>
#include <string>

/// A pseudo-terminal that stands for a serial port: path() is the port, this is the cable's far
/// end. Throws LinkError.
class TerminalPair
{
public:
    /// The port starts with echo, line editing, two stop bits and hardware flow control, so that a
    /// program that leaves them shows.
    TerminalPair()
    {
        char path[PATH_MAX] = {};
        int farEnd = -1;
        int port = -1;
        if (openpty(&farEnd, &port, path, nullptr, nullptr) != 0) failLink("pseudo-terminal");
        m_farEnd.reset(farEnd);
        m_port.reset(port);
        m_path = path;
        fcntl(farEnd, F_SETFL, O_NONBLOCK);
        termios before = settings();
        before.c_cflag |= CSTOPB | CRTSCTS;
        tcsetattr(port, TCSANOW, &before);
    }

    const std::string& path() const
    {
        return m_path;
    }
    termios settings() const
    {
        termios found = {};
        tcgetattr(m_port.get(), &found);
        return found;
    }
    void send(const Bytes& bytes)
    {
        if (write(m_farEnd.get(), bytes.data(), bytes.size()) != ssize_t(bytes.size()))
            failLink(m_path);
    }
    Bytes received()
    {
        Bytes bytes(READ_BYTES);
        const ssize_t count = read(m_farEnd.get(), bytes.data(), bytes.size());
        bytes.resize(count > 0 ? std::size_t(count) : 0);
        return bytes;
    }
    /// As when an adapter is pulled out.
    void unplug()
    {
        m_port.reset();
        m_farEnd.reset();
    }

private:
    UniqueDescriptor m_farEnd;
    UniqueDescriptor m_port;
    std::string m_path;
};

#endif
