#include "http/httpDaemon.h"

#include "http/httpError.h"

#include <microhttpd.h>

namespace {

enum {
    MEMORY_OF_A_CONNECTION = 32768 ///< the library's: a head with its index, then what is sent
};

/// The library must leave the target as it came: the station decodes it.
size_t keepEscapes(void*, MHD_Connection*, char* text)
{
    return std::strlen(text);
}

} // namespace

/// What the library calls.
class HttpDaemon::Calls
{
public:
    static void connectionChanged(void* context, MHD_Connection* handle, void**,
                                  MHD_ConnectionNotificationCode code)
    {
        auto& daemon = *static_cast<HttpDaemon*>(context);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) daemon.opened(handle);
        if (code == MHD_CONNECTION_NOTIFY_CLOSED) daemon.closed(handle);
    }

    static void* requestBegins(void* context, const char* target, MHD_Connection* handle)
    {
        HttpConnection* const connection = static_cast<HttpDaemon*>(context)->connectionOf(handle);
        if (connection) connection->exchange->target = target;
        return connection;
    }

    static MHD_Result requestCame(void* context, MHD_Connection* handle, const char*,
                                  const char* method, const char* version, const char* data,
                                  size_t* size, void**)
    {
        auto& daemon = *static_cast<HttpDaemon*>(context);
        HttpConnection* const connection = daemon.connectionOf(handle);
        return connection ? daemon.readRequest(*connection, method, version, data, size) : MHD_NO;
    }

    static void requestEnded(void* context, MHD_Connection* handle, void**,
                             MHD_RequestTerminationCode)
    {
        auto& daemon = *static_cast<HttpDaemon*>(context);
        if (HttpConnection* const connection = daemon.connectionOf(handle))
            daemon.answered(*connection);
    }
};

HttpDaemon::HttpDaemon(const Epoll& epoll, std::shared_ptr<const Wakeup> wakeup,
                       RequestHandler& handler)
    : m_epoll(epoll), m_wakeup(std::move(wakeup)), m_handler(handler), m_farewells(epoll)
{
    m_daemon = MHD_start_daemon(
        MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_NO_LISTEN_SOCKET, 0, nullptr, nullptr,
        &Calls::requestCame, this,
        // More than the station's own limit, which is what refuses.
        MHD_OPTION_CONNECTION_LIMIT, unsigned(2 * ConnectionLimits::MOST),
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, size_t(MEMORY_OF_A_CONNECTION),
        MHD_OPTION_NOTIFY_CONNECTION, &Calls::connectionChanged, this, MHD_OPTION_NOTIFY_COMPLETED,
        &Calls::requestEnded, this, MHD_OPTION_URI_LOG_CALLBACK, &Calls::requestBegins, this,
        MHD_OPTION_UNESCAPE_CALLBACK, &keepEscapes, nullptr, MHD_OPTION_END);
    if (!m_daemon) throw HttpError("cannot start the HTTP library");
}

HttpDaemon::~HttpDaemon()
{
    // The library must not be stopped with a suspended connection.
    for (const auto& connection : m_connections) {
        if (connection.second->rest != HttpConnection::RUNS)
            MHD_resume_connection(connection.second->handle);
    }
    MHD_stop_daemon(m_daemon);
}

int HttpDaemon::descriptor() const
{
    return MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
}

void HttpDaemon::add(AcceptedSocket accepted, qint64 now)
{
    m_now = now;
    const auto* const address = reinterpret_cast<const sockaddr*>(&accepted.address);
    const QString why = m_limits.refusal(PeerAddress::of(address).host);
    if (!why.isEmpty()) {
        m_farewells.say(std::move(accepted.socket), lastResponse(errorResponse(503, why)), now);
        return;
    }
    // From here on the library closes the socket, also when it does not take it.
    MHD_add_connection(m_daemon, accepted.socket.release(), address, accepted.addressSize);
}

void HttpDaemon::opened(MHD_Connection* handle)
{
    const int socket =
        MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    const auto* const address =
        MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
    auto connection =
        std::make_unique<HttpConnection>(handle, socket, PeerAddress::of(address), m_now);
    m_limits.opened(connection->peer.host);
    m_epoll.watch(socket, Epoll::ONCE);
    m_connections[socket] = std::move(connection);
}

void HttpDaemon::closed(MHD_Connection* handle)
{
    const HttpConnection* const connection = connectionOf(handle);
    if (!connection) return;
    m_limits.closed(connection->peer.host);
    m_epoll.forget(connection->socket);
    m_connections.erase(connection->socket);
}

HttpConnection* HttpDaemon::connectionOf(MHD_Connection* handle) const
{
    const int socket =
        MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    const auto found = m_connections.find(socket);
    return found == m_connections.end() ? nullptr : found->second.get();
}

void HttpDaemon::bytesCame(int socket, qint64 now)
{
    const auto found = m_connections.find(socket);
    if (found != m_connections.end()) found->second->times.bytesCame(now);
    m_farewells.bytesCame(socket);
}

void HttpDaemon::resume()
{
    for (const auto& entry : m_connections) {
        HttpConnection& connection = *entry.second;
        const bool isReady =
            (connection.rest == HttpConnection::AWAITS_ANSWER &&
             connection.exchange->answer->isGiven()) ||
            (connection.rest == HttpConnection::AWAITS_BODY && connection.stream->hasNews());
        if (isReady) goOn(connection);
    }
}

void HttpDaemon::goOn(HttpConnection& connection)
{
    connection.rest = HttpConnection::RUNS;
    connection.stream.reset();
    MHD_resume_connection(connection.handle);
}

void HttpDaemon::cutForbidden()
{
    for (const auto& entry : m_connections) {
        HttpConnection& connection = *entry.second;
        HttpExchange& exchange = *connection.exchange;
        if (exchange.stage != HttpExchange::STREAMED) continue;
        if (m_handler.mayGoOn(exchange.head.request)) continue;
        exchange.stage = HttpExchange::CUT;
        shutdown(connection.socket, SHUT_RDWR);
        if (connection.rest == HttpConnection::AWAITS_BODY) goOn(connection);
    }
}

std::optional<qint64> HttpDaemon::cutLate(qint64 now)
{
    std::optional<qint64> next = m_farewells.cutLate(now);
    for (const auto& entry : m_connections) {
        HttpConnection& connection = *entry.second;
        const std::optional<qint64> end = connection.times.end();
        if (!end) continue;
        if (*end <= now) {
            // The library sees the end of the connection and closes it.
            shutdown(connection.socket, SHUT_RDWR);
            connection.times.cut();
        } else if (!next || *end < *next) {
            next = end;
        }
    }
    return next;
}

void HttpDaemon::run(qint64 now)
{
    m_now = now;
    MHD_run(m_daemon);
}

bool HttpDaemon::isBusy() const
{
    unsigned long long milliseconds = 0;
    return MHD_get_timeout(m_daemon, &milliseconds) == MHD_YES && milliseconds == 0;
}
