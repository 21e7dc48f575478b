#include "http/farewells.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace {

enum { MOST = 64, CHUNK_BYTES = 4096, MOST_THROWN_AWAY = 262144 };
const qint64 LONGEST_US = 1000000;

} // namespace

void Farewells::say(Descriptor socket, const QByteArray& bytes, qint64 now)
{
    const int number = socket.number();
    // A new socket has room for it.
    (void)::send(number, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(number, SHUT_WR);
    if (m_farewells.size() >= MOST || !m_epoll.watch(number, Epoll::ALWAYS)) return;
    m_farewells.insert({number, Farewell{std::move(socket), now + LONGEST_US, MOST_THROWN_AWAY}});
}

void Farewells::bytesCame(int socket)
{
    const auto found = m_farewells.find(socket);
    if (found == m_farewells.end()) return;
    char thrownAway[CHUNK_BYTES];
    const ssize_t count = recv(socket, thrownAway, sizeof thrownAway, MSG_DONTWAIT);
    found->second.mostBytes -= std::max<ssize_t>(count, 0);
    const bool hasMore = count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
    if (!hasMore || found->second.mostBytes <= 0) m_farewells.erase(found);
}

std::optional<qint64> Farewells::cutLate(qint64 now)
{
    std::optional<qint64> next;
    for (auto farewell = m_farewells.begin(); farewell != m_farewells.end();) {
        if (farewell->second.end <= now) {
            farewell = m_farewells.erase(farewell);
            continue;
        }
        if (!next || farewell->second.end < *next) next = farewell->second.end;
        ++farewell;
    }
    return next;
}
