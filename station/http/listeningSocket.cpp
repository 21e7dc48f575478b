#include "http/listeningSocket.h"

#include "http/httpError.h"
#include "http/peerAddress.h"

#include <netinet/in.h>
#include <netinet/tcp.h>

namespace {

enum { BACKLOG = 128 };

/// An address in the form of the system's calls.
struct SystemAddress
{
    sockaddr_storage storage{};
    socklen_t size = 0;

    sockaddr* pointer()
    {
        return reinterpret_cast<sockaddr*>(&storage);
    }
};

SystemAddress systemAddress(const QHostAddress& host, quint16 port)
{
    SystemAddress address;
    if (host.protocol() == QAbstractSocket::IPv4Protocol) {
        auto& ipv4 = reinterpret_cast<sockaddr_in&>(address.storage);
        ipv4.sin_family = AF_INET;
        ipv4.sin_port = htons(port);
        ipv4.sin_addr.s_addr = htonl(host.toIPv4Address());
        address.size = sizeof ipv4;
        return address;
    }
    auto& ipv6 = reinterpret_cast<sockaddr_in6&>(address.storage);
    const Q_IPV6ADDR bytes = host.toIPv6Address();
    ipv6.sin6_family = AF_INET6;
    ipv6.sin6_port = htons(port);
    ipv6.sin6_scope_id = host.scopeId().toUInt();
    std::memcpy(&ipv6.sin6_addr, &bytes, sizeof bytes);
    address.size = sizeof ipv6;
    return address;
}

Descriptor listeningSocket(const QHostAddress& host, quint16 port)
{
    SystemAddress address = systemAddress(host, port);
    Descriptor descriptor(
        socket(address.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int yes = 1;
    // A restart must not wait for the connections of the run before.
    setsockopt(descriptor.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (descriptor.number() < 0 ||
        bind(descriptor.number(), address.pointer(), address.size) != 0 ||
        listen(descriptor.number(), BACKLOG) != 0) {
        throw systemHttpError("cannot listen on " + addressText(host, port).toStdString());
    }
    return descriptor;
}

/// An answer leaves at once, and a peer that takes nothing any more is found out.
void prepare(int socket)
{
    const int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &yes, sizeof yes);
    setPatience(socket, PATIENCE_WITH_ANSWER_MS);
}

} // namespace

void setPatience(int socket, Patience patience)
{
    const unsigned milliseconds = patience;
    setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &milliseconds, sizeof milliseconds);
}

ListeningSocket::ListeningSocket(const QHostAddress& address, quint16 port)
    : m_socket(listeningSocket(address, port))
{
}

quint16 ListeningSocket::port() const
{
    SystemAddress address;
    address.size = sizeof address.storage;
    getsockname(m_socket.number(), address.pointer(), &address.size);
    return address.storage.ss_family == AF_INET
               ? ntohs(reinterpret_cast<const sockaddr_in&>(address.storage).sin_port)
               : ntohs(reinterpret_cast<const sockaddr_in6&>(address.storage).sin6_port);
}

ListeningSocket::Outcome ListeningSocket::accept(AcceptedSocket& accepted) const
{
    accepted.addressSize = sizeof accepted.address;
    accepted.socket =
        Descriptor(accept4(m_socket.number(), reinterpret_cast<sockaddr*>(&accepted.address),
                           &accepted.addressSize, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (accepted.socket.number() < 0) {
        const bool isFull =
            errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM;
        return isFull ? OUT_OF_DESCRIPTORS : NOBODY_WAITS;
    }
    prepare(accepted.socket.number());
    return ACCEPTED;
}
