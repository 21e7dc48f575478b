#include "http/serverLoop.h"

#include "http/httpError.h"

#include <algorithm>

namespace {

const qint64 FULL_PAUSE_US = 1000000; // before connections are taken again

std::optional<qint64> earlier(std::optional<qint64> a, std::optional<qint64> b)
{
    if (!a || !b) return a ? a : b;
    return std::min(*a, *b);
}

} // namespace

ServerLoop::ServerLoop(const QHostAddress& address, quint16 port, RequestHandler& handler,
                       Turn turn)
    : m_turn(std::move(turn)),
      m_wakeup(std::make_shared<const Wakeup>()),
      m_listening(address, port),
      m_daemon(m_epoll, m_wakeup, handler)
{
    const bool isWatched = m_epoll.watch(m_wakeup->descriptor(), Epoll::ALWAYS) &&
                           m_epoll.watch(m_listening.descriptor(), Epoll::ALWAYS) &&
                           m_epoll.watch(m_daemon.descriptor(), Epoll::ALWAYS);
    if (!isWatched) throw systemHttpError("cannot watch the port");
}

void ServerLoop::stop()
{
    m_isStopping = true;
    m_wakeup->wake();
}

void ServerLoop::wake()
{
    m_wakeup->wake();
}

void ServerLoop::rightsChanged()
{
    m_haveRightsChanged = true;
    m_wakeup->wake();
}

void ServerLoop::run()
{
    bool isWoken = true; // the first turn says when the second is due
    while (!m_isStopping) {
        const qint64 now = m_clock.steady();
        if (m_acceptsAgain && *m_acceptsAgain <= now &&
            m_epoll.watch(m_listening.descriptor(), Epoll::ALWAYS))
            m_acceptsAgain.reset();
        takeTurn(now, isWoken);
        // The mark goes before the look: a change from now on brings the next one.
        if (m_haveRightsChanged.exchange(false)) m_daemon.cutForbidden();
        m_nextCut = m_daemon.cutLate(now);
        m_daemon.run(now);
        m_clients = m_daemon.count();
        const News news = wait();
        isWoken = news.isWoken;
        if (news.isSomebodyWaiting) acceptAll(m_clock.steady());
        m_clients = m_daemon.count(); // a client may ask for it in the next run of the library
    }
}

/// The turn comes before the library runs, so that what it wakes leaves at once.
void ServerLoop::takeTurn(qint64 now, bool isWoken)
{
    const bool isDue = m_turnDue && *m_turnDue <= now;
    if (!isWoken && !isDue) return;
    if (m_turn) m_turnDue = m_turn(now);
    m_daemon.resume();
}

ServerLoop::News ServerLoop::wait()
{
    News news;
    for (const int descriptor : m_epoll.wait(longestWait())) {
        if (descriptor == m_wakeup->descriptor()) {
            m_wakeup->clear();
            news.isWoken = true;
        } else if (descriptor == m_listening.descriptor()) {
            news.isSomebodyWaiting = true;
        } else {
            m_daemon.bytesCame(descriptor, m_clock.steady());
        }
    }
    return news;
}

/// In milliseconds; negative: no limit.
int ServerLoop::longestWait() const
{
    enum { MOST_MS = 60000 };
    if (m_daemon.isBusy()) return 0;
    const qint64 now = m_clock.steady();
    const auto due = earlier(m_turnDue, earlier(m_nextCut, m_acceptsAgain));
    if (!due) return -1;
    // Rounded up: a wait that ends too early would be followed by waits of 0 ms.
    return int(std::clamp<qint64>((*due - now + 999) / 1000, 0, MOST_MS));
}

void ServerLoop::acceptAll(qint64 now)
{
    AcceptedSocket accepted;
    ListeningSocket::Outcome outcome = m_listening.accept(accepted);
    for (; outcome == ListeningSocket::ACCEPTED; outcome = m_listening.accept(accepted))
        m_daemon.add(std::move(accepted), now);
    if (outcome == ListeningSocket::NOBODY_WAITS) return;
    // Whoever waits for a descriptor would end every wait at once.
    m_epoll.forget(m_listening.descriptor());
    m_acceptsAgain = now + FULL_PAUSE_US;
}

void ServerLoop::acceptAgain(qint64 now)
{
    if (m_epoll.watch(m_listening.descriptor(), Epoll::ALWAYS))
        m_acceptsAgain.reset();
    else
        m_acceptsAgain = now + FULL_PAUSE_US;
}
