#ifndef BARE_PEER_H
#define BARE_PEER_H

#include "http/listeningSocket.h"

#include <QByteArray>

#include <poll.h>

#include <cerrno>
#include <stdexcept>

/// A port on this machine whose test answers byte by byte, as a broker would. It takes one
/// connection at a time.
class BarePeer
{
public:
    BarePeer() : m_port(QHostAddress(QHostAddress::LocalHost), 0) {}

    quint16 port() const
    {
        return m_port.port();
    }

    /// Whether a client is there, who may have come just now.
    bool hasClient()
    {
        if (m_client.socket.number() < 0) m_port.accept(m_client);
        return m_client.socket.number() >= 0;
    }

    void send(const QByteArray& bytes)
    {
        if (::send(m_client.socket.number(), bytes.constData(), size_t(bytes.size()),
                   MSG_NOSIGNAL) != bytes.size())
            throw std::runtime_error("the client does not take bytes");
    }

    /// Takes what is there.
    void read()
    {
        char buffer[65536];
        while (hasClient() && !m_isClosed) {
            const ssize_t count =
                recv(m_client.socket.number(), buffer, sizeof buffer, MSG_DONTWAIT);
            if (count < 0 && errno == EAGAIN) return;
            if (count <= 0)
                m_isClosed = true;
            else
                m_taken.append(buffer, int(count));
        }
    }

    /// All bytes of this client.
    const QByteArray& taken() const
    {
        return m_taken;
    }

    /// Whether the client hung up behind these bytes.
    bool isClosed() const
    {
        return m_isClosed;
    }

    /// Hangs up on the client.
    void hangUp()
    {
        m_client = AcceptedSocket();
        m_taken.clear();
        m_isClosed = false;
    }

private:
    const ListeningSocket m_port;
    AcceptedSocket m_client;
    QByteArray m_taken;
    bool m_isClosed = false;
};

#endif
