#ifndef HTTP_SERVER_H
#define HTTP_SERVER_H

#include "http/guardedRoutes.h"
#include "http/httpError.h"

#include <QHostAddress>
#include <QStringList>

#include <memory>
#include <thread>

class ServerLoop;

/// The station's HTTP server: one thread, which waits in one epoll. It refuses what is not meant
/// for it before any route sees it.
///
/// The constructor listens; start() begins to answer. The owner's thread constructs and destroys
/// it.
class HttpServer
{
public:
    struct Settings
    {
        QHostAddress address = QHostAddress(QHostAddress::LocalHost);
        quint16 port = 8480;   ///< 0: any free port
        QByteArray token;      ///< empty: none is asked for
        QStringList hostNames; ///< further names that `Host` may have
    };

    /// Does work of the HTTP thread that is due, such as the streams'.
    /// @param now  StationClock::steady(), microseconds
    /// @return when it is due again; empty: after the next wake()
    using Turn = std::function<std::optional<qint64>(qint64 now)>;

    /// @param routes  must outlive the server
    /// @param turn    null: there is none
    /// @throws HttpError
    HttpServer(const Settings& settings, const HttpRoutes& routes, Turn turn);

    /// Cuts all connections; answers that are given later go nowhere.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    void start();

    /// The port that it listens on.
    quint16 port() const;

    /// Takes the turn soon and asks the waiting bodies again. From any thread; cheap.
    void wake();

    /// Connections that are open. From any thread.
    int clients() const;

    /// From now on requests need this token, empty: none, and `Host` may have these names. A
    /// stream of a request that would be refused now is cut. From any thread.
    void setAccess(const QByteArray& token, const QStringList& hostNames);

private:
    const SystemClock m_clock;
    GuardedRoutes m_routes;
    const std::unique_ptr<ServerLoop> m_loop;
    std::thread m_thread;
};

#endif
