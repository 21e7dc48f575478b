#ifndef LISTENING_SOCKET_H
#define LISTENING_SOCKET_H

#include "links/descriptor.h"

#include <QHostAddress>

#include <sys/socket.h>

/// A connection that came in, and its peer.
struct AcceptedSocket
{
    Descriptor socket;
    sockaddr_storage address{};
    socklen_t addressSize = sizeof(sockaddr_storage);
};

/// How long a peer may leave what it was sent untaken; then it counts as gone, and the system ends
/// the connection. A stream's client may rest: its machine may sleep for a moment.
enum Patience { PATIENCE_WITH_ANSWER_MS = 30000, PATIENCE_WITH_STREAM_MS = 120000 };

void setPatience(int socket, Patience patience);

/// A TCP port that takes connections.
class ListeningSocket
{
public:
    enum Outcome {
        ACCEPTED,
        NOBODY_WAITS,
        OUT_OF_DESCRIPTORS ///< somebody waits, and goes on waiting
    };

    /// @param port  0: any free port
    /// @throws HttpError
    ListeningSocket(const QHostAddress& address, quint16 port);

    quint16 port() const;

    int descriptor() const
    {
        return m_socket.number();
    }

    /// Takes a waiting connection; its socket never blocks.
    Outcome accept(AcceptedSocket& accepted) const;

private:
    Descriptor m_socket;
};

#endif
