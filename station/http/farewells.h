#ifndef FAREWELLS_H
#define FAREWELLS_H

#include "http/epoll.h"

#include <QByteArray>

#include <map>
#include <optional>

/// Connections that have got a last answer and are closed by the other side first. A socket that is
/// closed while bytes come in takes its answer back: the peer's system throws away what it has not
/// read yet. A peer that sends on and on has itself to blame. Only the HTTP thread uses it.
class Farewells
{
public:
    explicit Farewells(const Epoll& epoll) : m_epoll(epoll) {}

    /// Sends the bytes and waits a moment for the peer's end. With too many such connections the
    /// socket is closed at once.
    void say(Descriptor socket, const QByteArray& bytes, qint64 now);

    /// A watched descriptor has bytes; nothing happens when it is not one of these.
    void bytesCame(int socket);

    /// Closes those that have waited long enough.
    /// @return when the next one has
    std::optional<qint64> cutLate(qint64 now);

private:
    struct Farewell
    {
        Descriptor socket;
        qint64 end;
        qint64 mostBytes; ///< that are still thrown away
    };

    const Epoll& m_epoll;
    std::map<int, Farewell> m_farewells; ///< by socket
};

#endif
