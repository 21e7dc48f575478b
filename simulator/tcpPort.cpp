#include "tcpPort.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>

namespace {

const int WAITING_HOSTS = 8;

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Addresses addressesOf(const std::string& name, int port)
{
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV | AI_PASSIVE;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int result = getaddrinfo(name.c_str(), std::to_string(port).c_str(), &hints, &found);
    if (result != 0) throw LinkError(name + ": " + gai_strerror(result));
    return Addresses(found, &freeaddrinfo);
}

int boundPort(int listener)
{
    sockaddr_storage bound = {};
    socklen_t size = sizeof bound;
    char digits[NI_MAXSERV] = {};
    if (getsockname(listener, reinterpret_cast<sockaddr*>(&bound), &size) != 0) return 0;
    getnameinfo(reinterpret_cast<sockaddr*>(&bound), size, nullptr, 0, digits, sizeof digits,
                NI_NUMERICSERV);
    return std::stoi(digits);
}

} // namespace

TcpPort::TcpPort(const std::string& bindAddress, int port) : m_bindAddress(bindAddress)
{
    listenAt(port);
}

void TcpPort::listenAt(int port)
{
    const std::string name = "tcp:" + m_bindAddress + "," + std::to_string(port);
    const Addresses found = addressesOf(m_bindAddress, port);
    m_listener.reset(socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (m_listener.get() < 0) failLink(name);
    const int on = 1;
    setsockopt(m_listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(m_listener.get(), found->ai_addr, found->ai_addrlen) != 0 ||
        listen(m_listener.get(), WAITING_HOSTS) != 0)
        failOpening(name);
}

std::string TcpPort::address() const
{
    return "tcp:" + m_bindAddress + "," + std::to_string(boundPort(m_listener.get()));
}

void TcpPort::acceptHost()
{
    const int host = accept4(m_listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (host < 0) return;
    const int on = 1;
    setsockopt(host, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_host.reset(host);
}

Bytes TcpPort::receive()
{
    Bytes bytes(READ_BYTES);
    const ssize_t count = recv(m_host.get(), bytes.data(), bytes.size(), 0);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) m_host.reset();
    bytes.resize(count > 0 ? std::size_t(count) : 0);
    return bytes;
}

void TcpPort::send(const Bytes& bytes)
{
    if (m_host.get() < 0) return;
    if (::send(m_host.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0 && errno != EAGAIN &&
        errno != EINTR)
        m_host.reset();
}
