// The stages of a request on a connection of the HTTP library, see HttpExchange.
#include "http/httpDaemon.h"

#include "http/requestFraming.h"

#include <fcntl.h>
#include <microhttpd.h>

namespace {

MHD_Result addHeader(void* headers, MHD_ValueKind, const char* name, size_t nameSize,
                     const char* value, size_t valueSize)
{
    // A header without a value has no text.
    static_cast<HttpRequest::Pairs*>(headers)->emplace_back(
        QByteArray(name, int(nameSize)).toLower(),
        value ? QByteArray(value, int(valueSize)) : QByteArray());
    return MHD_YES;
}

} // namespace

MHD_Result HttpDaemon::readRequest(HttpConnection& connection, const char* method,
                                   const char* version, const char* data, size_t* size)
{
    switch (connection.exchange->stage) {
    case HttpExchange::HEAD:
        return headEnded(connection, method, version);
    case HttpExchange::BODY: {
        if (*size == 0) return bodyEnded(connection);
        const size_t count = *size;
        *size = 0;
        return bodyCame(connection, data, count);
    }
    case HttpExchange::WAITING:
        return sendAnswer(connection);
    case HttpExchange::ANSWERED:
    case HttpExchange::STREAMED:
    case HttpExchange::CUT:
        break;
    }
    return MHD_NO;
}

MHD_Result HttpDaemon::headEnded(HttpConnection& connection, const char* method,
                                 const char* version)
{
    HttpExchange& exchange = *connection.exchange;
    RequestHead head{method, exchange.target, version, {}, 0};
    MHD_get_connection_values_n(connection.handle, MHD_HEADER_KIND, &addHeader, &head.headers);
    head.bytes = MHD_get_connection_info(connection.handle, MHD_CONNECTION_INFO_REQUEST_HEADER_SIZE)
                     ->header_size;
    exchange.head = judgedHead(head, connection.peer.text(), m_handler);
    connection.times.headEnded(m_now);
    exchange.stage = HttpExchange::BODY;
    if (exchange.head.sequel == JudgedHead::BODY_IS_READ) return MHD_YES;
    return answerAndClose(connection, *exchange.head.refusal);
}

MHD_Result HttpDaemon::bodyCame(HttpConnection& connection, const char* data, size_t size)
{
    HttpExchange& exchange = *connection.exchange;
    exchange.bodyBytes += qint64(size);
    if (exchange.bodyBytes > MOST_BODY_BYTES) return answerAndClose(connection, bodyTooLarge());
    if (!exchange.head.refusal) exchange.head.request.body.append(data, int(size));
    return MHD_YES;
}

MHD_Result HttpDaemon::bodyEnded(HttpConnection& connection)
{
    HttpExchange& exchange = *connection.exchange;
    connection.times.bodyEnded();
    exchange.answer = std::make_shared<PendingAnswer>(m_wakeup);
    exchange.stage = HttpExchange::WAITING;
    if (exchange.head.refusal)
        exchange.answer->give(*exchange.head.refusal);
    else
        m_handler.answer(exchange.head.request, answerFunction(exchange.answer));
    return sendAnswer(connection);
}

MHD_Result HttpDaemon::sendAnswer(HttpConnection& connection)
{
    const std::optional<HttpResponse> response = connection.exchange->answer->take();
    if (response) return send(connection, *response);
    suspend(connection, HttpConnection::AWAITS_ANSWER);
    return MHD_YES;
}

MHD_Result HttpDaemon::send(HttpConnection& connection, const HttpResponse& response)
{
    // Of a body without a known size the library would send the end even here.
    if (response.stream && connection.exchange->head.request.method == "HEAD")
        return answerAndClose(connection, response);
    connection.times.bodyEnded();
    connection.exchange->stage = response.stream ? HttpExchange::STREAMED : HttpExchange::ANSWERED;
    if (response.stream) setPatience(connection.socket, PATIENCE_WITH_STREAM_MS);
    // The library ends a body before it ends its connection, so the reference holds.
    return sendResponse(connection.handle, response,
                        [this, &connection](const std::shared_ptr<HttpBody>& body) {
                            return restBody(connection, body);
                        });
}

/// A stream that was cut has nothing to wait for.
bool HttpDaemon::restBody(HttpConnection& connection, const std::shared_ptr<HttpBody>& body)
{
    if (connection.exchange->stage == HttpExchange::CUT) return false;
    connection.stream = body;
    suspend(connection, HttpConnection::AWAITS_BODY);
    return true;
}

/// The library takes no answer in the middle of a body, and closes its socket over bytes that it
/// has not read: so the station answers by itself, on a second descriptor of the socket.
MHD_Result HttpDaemon::answerAndClose(const HttpConnection& connection,
                                      const HttpResponse& response)
{
    m_farewells.say(Descriptor(fcntl(connection.socket, F_DUPFD_CLOEXEC, 0)),
                    lastResponse(response), m_now);
    return MHD_NO;
}

void HttpDaemon::answered(HttpConnection& connection)
{
    connection.exchange = std::make_unique<HttpExchange>();
    setPatience(connection.socket, PATIENCE_WITH_ANSWER_MS);
    connection.times.answered(m_now);
    m_epoll.watch(connection.socket, Epoll::ONCE);
}

void HttpDaemon::suspend(HttpConnection& connection, HttpConnection::Rest rest)
{
    connection.rest = rest;
    MHD_suspend_connection(connection.handle);
}
