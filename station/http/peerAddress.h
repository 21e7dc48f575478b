#ifndef PEER_ADDRESS_H
#define PEER_ADDRESS_H

#include <QHostAddress>

#include <sys/socket.h>

/// Where a connection comes from. An IPv4 peer of a socket for both versions is an IPv4 address.
struct PeerAddress
{
    QHostAddress host;
    quint16 port = 0;

    static PeerAddress of(const sockaddr* address);

    /// "127.0.0.1:50000", "[::1]:50000"
    QString text() const;
};

/// "127.0.0.1:50000", "[::1]:50000": as in a URL.
QString addressText(const QHostAddress& host, quint16 port);

#endif
