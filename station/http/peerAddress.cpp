#include "http/peerAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>

PeerAddress PeerAddress::of(const sockaddr* address)
{
    PeerAddress peer;
    peer.host = QHostAddress(address);
    bool isMapped = false;
    const quint32 mapped = peer.host.toIPv4Address(&isMapped);
    if (isMapped) peer.host = QHostAddress(mapped);
    if (address->sa_family == AF_INET)
        peer.port = ntohs(reinterpret_cast<const sockaddr_in*>(address)->sin_port);
    if (address->sa_family == AF_INET6)
        peer.port = ntohs(reinterpret_cast<const sockaddr_in6*>(address)->sin6_port);
    return peer;
}

QString PeerAddress::text() const
{
    return addressText(host, port);
}

QString addressText(const QHostAddress& host, quint16 port)
{
    const bool isBracketed = host.protocol() == QAbstractSocket::IPv6Protocol;
    return (isBracketed ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(host.toString())
        .arg(port);
}
