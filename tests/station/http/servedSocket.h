#ifndef SERVED_SOCKET_H
#define SERVED_SOCKET_H

#include "links/descriptor.h"

#include <QByteArray>

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>

/// A client of a server on this machine. A test that would wait for ever fails after 20 s.
class ServedSocket
{
public:
    explicit ServedSocket(quint16 port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        enum { PATIENCE_S = 20 };
        const timeval patience{PATIENCE_S, 0};
        setsockopt(m_socket.number(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(m_socket.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect");
    }

    /// Sends a GET.
    void ask(const QByteArray& path, const QByteArray& headers = "Host: localhost\r\n")
    {
        const QByteArray request = "GET " + path + " HTTP/1.1\r\n" + headers + "\r\n";
        if (send(m_socket.number(), request.constData(), size_t(request.size()), MSG_NOSIGNAL) < 0)
            throw std::runtime_error("cannot send");
    }

    /// The body of the next answer, which has a length.
    QByteArray body()
    {
        const QByteArray head = until("\r\n\r\n");
        const int at = int(head.indexOf("Content-Length: "));
        if (at < 0) throw std::runtime_error("no length in " + head.toStdString());
        return bytes(std::atoi(head.constData() + at + 16));
    }

    /// The next piece of a body that is made while it is sent.
    QByteArray chunk()
    {
        if (!m_isStreaming) until("\r\n\r\n");
        m_isStreaming = true;
        const int size = until("\r\n").toInt(nullptr, 16);
        const QByteArray piece = bytes(size);
        until("\r\n");
        if (size == 0) m_isStreaming = false;
        return piece;
    }

    /// Whether the server hangs up without another byte.
    bool isClosed()
    {
        char byte;
        const ssize_t count = recv(m_socket.number(), &byte, 1, 0);
        return count == 0 || (count < 0 && errno == ECONNRESET);
    }

private:
    void more()
    {
        char buffer[4096];
        const ssize_t count = recv(m_socket.number(), buffer, sizeof buffer, 0);
        if (count <= 0) throw std::runtime_error("hung up behind " + m_coming.toStdString());
        m_coming.append(buffer, int(count));
    }

    QByteArray until(const QByteArray& end)
    {
        while (!m_coming.contains(end))
            more();
        const int at = int(m_coming.indexOf(end));
        const QByteArray found = m_coming.left(at);
        m_coming.remove(0, at + int(end.size()));
        return found;
    }

    QByteArray bytes(int count)
    {
        while (m_coming.size() < count)
            more();
        const QByteArray found = m_coming.left(count);
        m_coming.remove(0, count);
        return found;
    }

    const Descriptor m_socket;
    QByteArray m_coming;
    bool m_isStreaming = false;
};

#endif
