#ifndef SERVER_LOOP_H
#define SERVER_LOOP_H

#include "http/httpDaemon.h"
#include "values/stationClock.h"

#include <atomic>

/// The work of the HTTP thread: waits in one epoll, and deals with what ends the wait.
///
/// The owner's thread constructs and destroys it; run() is the HTTP thread. Every other function
/// may be called from any thread.
class ServerLoop
{
public:
    /// As HttpServer::Turn.
    using Turn = std::function<std::optional<qint64>(qint64 now)>;

    /// @param handler  must outlive the loop
    /// @throws HttpError
    ServerLoop(const QHostAddress& address, quint16 port, RequestHandler& handler, Turn turn);

    /// Serves until stop().
    void run();

    void stop();
    void wake();

    /// The handler lets in others than before: streams that it would refuse now are cut soon.
    void rightsChanged();

    quint16 port() const
    {
        return m_listening.port();
    }

    int clients() const
    {
        return m_clients;
    }

private:
    /// What ended a wait.
    struct News
    {
        bool isWoken = false, isSomebodyWaiting = false;
    };

    News wait();
    int longestWait() const;
    void takeTurn(qint64 now, bool isWoken);
    void acceptAll(qint64 now);
    void acceptAgain(qint64 now);

    const SystemClock m_clock;
    const Turn m_turn;
    const std::shared_ptr<const Wakeup> m_wakeup;
    const Epoll m_epoll;
    const ListeningSocket m_listening;
    // Of the HTTP thread:
    HttpDaemon m_daemon;
    std::optional<qint64> m_turnDue;
    std::optional<qint64> m_nextCut;      ///< of a connection whose time is up
    std::optional<qint64> m_acceptsAgain; ///< while the system has no descriptor left

    std::atomic<bool> m_isStopping{false};
    std::atomic<bool> m_haveRightsChanged{false}; ///< since the last look at the streams
    std::atomic<int> m_clients{0};
};

#endif
