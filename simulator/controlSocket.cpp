#include "controlSocket.h"

#include "lineEnd.h"
#include "staleName.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace {

const std::size_t LONGEST_PATH = 99; // of 107, less a dot and the digits of a process
const mode_t NOT_FOR_OTHERS = 0077;
const char TOO_MANY[] = "error there are 16 clients already\n";
static_assert(ControlSocket::MOST_CLIENTS == 16, "as TOO_MANY says");

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

int newSocket()
{
    return socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

std::string besideName(const std::string& path)
{
    return path + "." + std::to_string(getpid());
}

bool renamed(const std::string& from, const std::string& to)
{
    return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

bool isSocket(const std::string& path)
{
    struct stat found = {};
    return lstat(path.c_str(), &found) == 0 && S_ISSOCK(found.st_mode);
}

/// True when no program listens on the socket any more.
bool isStaleSocket(const std::string& path)
{
    if (!isSocket(path)) return false;
    const sockaddr_un address = addressOf(path);
    const UniqueDescriptor caller(newSocket());
    return connect(caller.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) !=
               0 &&
           errno == ECONNREFUSED;
}

} // namespace

ControlSocket::ControlSocket(const std::string& path)
    : m_path(path), m_epoll(epoll_create1(EPOLL_CLOEXEC)), m_listener(newSocket())
{
    if (m_epoll.get() < 0 || m_listener.get() < 0) failLink(path);
    listenAt();
    watch(EPOLL_CTL_ADD, m_listener.get(), EPOLLIN);
}

ControlSocket::~ControlSocket()
{
    struct stat found = {};
    if (lstat(m_path.c_str(), &found) == 0 && found.st_dev == m_device && found.st_ino == m_inode)
        unlink(m_path.c_str());
}

/// The socket gets its name when it listens: until then it would look stale to another program.
void ControlSocket::listenAt()
{
    const std::string made = besideName(m_path);
    if (m_path.empty() || m_path.size() > LONGEST_PATH)
        throw LinkError(m_path + ": the path of a socket has 1 to " + std::to_string(LONGEST_PATH) +
                        " bytes");
    bindAt(made);
    if (listen(m_listener.get(), MOST_CLIENTS) != 0 || !takeName(made)) {
        const int reason = errno;
        unlink(made.c_str());
        errno = reason;
        failOpening(m_path);
    }
    struct stat found = {};
    if (lstat(m_path.c_str(), &found) != 0) return;
    m_device = found.st_dev;
    m_inode = found.st_ino;
}

/// Only the owner may open the socket.
void ControlSocket::bindAt(const std::string& path)
{
    const sockaddr_un address = addressOf(path);
    const mode_t before = umask(NOT_FOR_OTHERS);
    const int result =
        bind(m_listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    umask(before);
    if (result != 0) failLink(m_path);
}

/// @return false when another program has the name; errno says so
bool ControlSocket::takeName(const std::string& made) const
{
    if (renamed(made, m_path)) return true;
    if (errno != EEXIST) return false;
    if (!isSocket(m_path)) {
        errno = EEXIST;
        return false;
    }
    if (removeStaleName(m_path, isStaleSocket) && renamed(made, m_path)) return true;
    if (errno == EEXIST) errno = EADDRINUSE;
    return false;
}

void ControlSocket::watch(int operation, int descriptor, unsigned events)
{
    epoll_event wanted = {};
    wanted.events = events;
    wanted.data.fd = descriptor;
    epoll_ctl(m_epoll.get(), operation, descriptor, &wanted);
}

void ControlSocket::serve(const LineClient::Answer& answer)
{
    epoll_event ready[MOST_CLIENTS + 1];
    const int count = epoll_wait(m_epoll.get(), ready, MOST_CLIENTS + 1, 0);
    for (int i = 0; i < count; ++i) {
        if (ready[i].data.fd == m_listener.get()) {
            acceptClient();
        } else {
            serveClient(ready[i].data.fd, answer);
        }
    }
}

void ControlSocket::acceptClient()
{
    UniqueDescriptor accepted(
        accept4(m_listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    const int client = accepted.get();
    if (client < 0) return;
    if (m_clients.size() >= MOST_CLIENTS) {
        send(client, TOO_MANY, sizeof TOO_MANY - 1, MSG_NOSIGNAL);
        return;
    }
    m_clients.emplace(client, std::move(accepted));
    watch(EPOLL_CTL_ADD, client, EPOLLIN);
}

void ControlSocket::serveClient(int descriptor, const LineClient::Answer& answer)
{
    const auto found = m_clients.find(descriptor);
    if (found == m_clients.end()) return;
    LineClient& client = found->second;
    if (!client.serve(answer)) {
        m_clients.erase(found); // closing it also ends the watch
        return;
    }
    watch(EPOLL_CTL_MOD, descriptor, client.isWaiting() ? EPOLLOUT : EPOLLIN);
}
