#ifndef BARE_PEER_H
#define BARE_PEER_H

#include "http/listeningSocket.h"

#include <QByteArray>

#include <poll.h>

#include <cerrno>
#include <stdexcept>

/// A client whose test answers byte by byte, as a broker would.
class BareClient
{
public:
    /// Takes a connection that waits at the port, unless it has one.
    /// @return whether it has one now
    bool comeFrom(const ListeningSocket& port)
    {
        if (m_accepted.socket.number() < 0) port.accept(m_accepted);
        return m_accepted.socket.number() >= 0;
    }

    void send(const QByteArray& bytes)
    {
        if (::send(m_accepted.socket.number(), bytes.constData(), size_t(bytes.size()),
                   MSG_NOSIGNAL) != bytes.size())
            throw std::runtime_error("the client does not take bytes");
    }

    /// Takes what is there.
    void read()
    {
        char buffer[65536];
        while (!m_isClosed) {
            const ssize_t count =
                recv(m_accepted.socket.number(), buffer, sizeof buffer, MSG_DONTWAIT);
            if (count < 0 && errno == EAGAIN) return;
            if (count <= 0)
                m_isClosed = true;
            else
                m_taken.append(buffer, int(count));
        }
    }

    /// All its bytes.
    const QByteArray& taken() const
    {
        return m_taken;
    }

    /// Whether it hung up behind these bytes.
    bool isClosed() const
    {
        return m_isClosed;
    }

private:
    AcceptedSocket m_accepted;
    QByteArray m_taken;
    bool m_isClosed = false;
};

/// A port on this machine that takes one client at a time.
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
        return m_client.comeFrom(m_port);
    }

    void send(const QByteArray& bytes)
    {
        m_client.send(bytes);
    }

    /// Takes what is there.
    void read()
    {
        if (hasClient()) m_client.read();
    }

    /// All bytes of this client.
    const QByteArray& taken() const
    {
        return m_client.taken();
    }

    /// Whether the client hung up behind these bytes.
    bool isClosed() const
    {
        return m_client.isClosed();
    }

    /// Hangs up on the client.
    void hangUp()
    {
        m_client = BareClient();
    }

private:
    const ListeningSocket m_port;
    BareClient m_client;
};

#endif
