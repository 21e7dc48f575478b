#include "program/serviceManager.h"

#include <QByteArray>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <ctime>
#include <optional>

namespace {

struct SocketName
{
    sockaddr_un address = {};
    socklen_t length = 0;
};

/// Where the manager listens: a path, or with @ an abstract name, which has no file.
/// Nothing: no manager listens, or at a place that is no local socket.
std::optional<SocketName> managerSocket()
{
    const QByteArray place = qgetenv("NOTIFY_SOCKET");
    SocketName name;
    const bool isLocal = place.startsWith('/') || place.startsWith('@');
    if (!isLocal || size_t(place.size()) >= sizeof name.address.sun_path) return std::nullopt;
    name.address.sun_family = AF_UNIX;
    std::memcpy(name.address.sun_path, place.constData(), size_t(place.size()));
    if (place.startsWith('@')) name.address.sun_path[0] = '\0';
    name.length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(place.size()));
    return name;
}

/// One datagram is all there is to it. libsystemd, which sends it, too, brings five more libraries
/// and 0.9 MB of resident memory. A manager that does not take it changes nothing for the station.
void tellManager(const QByteArray& message)
{
    const std::optional<SocketName> name = managerSocket();
    if (!name) return;
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0) return;
    ::sendto(socket, message.constData(), size_t(message.size()), MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&name->address), name->length);
    ::close(socket);
}

} // namespace

void tellReady()
{
    tellManager("READY=1");
}

/// The manager compares the time with that of its own request.
void tellReloading()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const qint64 time = qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
    tellManager("RELOADING=1\nMONOTONIC_USEC=" + QByteArray::number(time));
}

void tellStopping()
{
    tellManager("STOPPING=1");
}
