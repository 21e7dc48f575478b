#ifndef HTTP_DAEMON_H
#define HTTP_DAEMON_H

#include "http/connectionLimits.h"
#include "http/farewells.h"
#include "http/httpConnection.h"
#include "http/listeningSocket.h"
#include "http/sentResponse.h"

#include <map>

/// The HTTP library and the connections that it serves. It turns the library's calls into requests,
/// and answers into the library's responses. Only the HTTP thread uses it.
///
/// The library never waits and has no thread. A connection whose answer or body is not there yet is
/// suspended: it costs nothing until resume().
class HttpDaemon
{
public:
    /// @param epoll  is told to watch the connections for the begin of a request
    /// @throws HttpError
    HttpDaemon(const Epoll& epoll, std::shared_ptr<const Wakeup> wakeup, RequestHandler& handler);
    ~HttpDaemon();
    HttpDaemon(const HttpDaemon&) = delete;
    HttpDaemon& operator=(const HttpDaemon&) = delete;

    /// To be watched; run() when it is readable.
    int descriptor() const;

    /// Serves one more connection, or refuses it with 503 when there are too many.
    void add(AcceptedSocket accepted, qint64 now);

    int count() const
    {
        return m_limits.count();
    }

    /// A watched descriptor has bytes; nothing happens when it is not that of a connection.
    void bytesCame(int socket, qint64 now);

    /// Goes on with the connections whose answer is given or whose body may have something.
    void resume();

    /// Cuts the streams that may not go on: a stream must not outlive the right to it.
    void cutForbidden();

    /// Cuts the connections whose time is up.
    /// @return when the next one's time is up
    std::optional<qint64> cutLate(qint64 now);

    /// Reads and writes all that can be read and written.
    void run(qint64 now);

    /// Whether run() has more to do at once.
    bool isBusy() const;

private:
    class Calls;

    void opened(MHD_Connection* handle);
    void closed(MHD_Connection* handle);
    HttpConnection* connectionOf(MHD_Connection* handle) const;
    MHD_Result readRequest(HttpConnection& connection, const char* method, const char* version,
                           const char* data, size_t* size);
    MHD_Result headEnded(HttpConnection& connection, const char* method, const char* version);
    MHD_Result bodyCame(HttpConnection& connection, const char* data, size_t size);
    MHD_Result bodyEnded(HttpConnection& connection);
    MHD_Result sendAnswer(HttpConnection& connection);
    MHD_Result send(HttpConnection& connection, const HttpResponse& response);
    MHD_Result answerAndClose(const HttpConnection& connection, const HttpResponse& response);
    void answered(HttpConnection& connection);
    bool restBody(HttpConnection& connection, const std::shared_ptr<HttpBody>& body);
    static void goOn(HttpConnection& connection);
    void suspend(HttpConnection& connection, HttpConnection::Rest rest);

    const Epoll& m_epoll;
    const std::shared_ptr<const Wakeup> m_wakeup;
    RequestHandler& m_handler;
    ConnectionLimits m_limits;
    Farewells m_farewells;
    std::map<int, std::unique_ptr<HttpConnection>> m_connections; ///< by socket
    qint64 m_now = 0;                                             ///< of the current call
    MHD_Daemon* m_daemon = nullptr;
};

#endif
