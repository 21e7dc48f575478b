#ifndef HTTP_MESSAGES_H
#define HTTP_MESSAGES_H

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// A request that has passed the checks of the server: host, token, origin, sizes.
struct HttpRequest
{
    using Pairs = std::vector<std::pair<QByteArray, QByteArray>>;

    QByteArray method; ///< "GET", "POST"
    QByteArray path;   ///< "/api/v1/values", decoded, without the query
    Pairs query;       ///< decoded, in the order of the request
    Pairs headers;     ///< names in lower case
    QByteArray body;   ///< at most 64 kB
    QString peer;      ///< "127.0.0.1:50000", "[::1]:50000"

    /// The first value of a key of the query; empty: it has no such key.
    std::optional<QByteArray> queried(const QByteArray& key) const;

    /// The value of a header, named in lower case; empty: there is none.
    QByteArray header(const QByteArray& name) const;
};

/// A body that is made while it is sent. Only the HTTP thread calls it.
class HttpBody
{
public:
    enum { NOTHING_YET = 0, END = -1 };

    virtual ~HttpBody() = default;

    /// Fills at most `size` bytes.
    /// @return their number; NOTHING_YET: asked again after HttpServer::wake() or a turn; END
    virtual qint64 read(char* to, size_t size) = 0;

    /// After NOTHING_YET: whether read() would do something now. A cheap answer spares a sleeping
    /// stream the work of being resumed at each turn.
    virtual bool hasNews() const
    {
        return true;
    }
};

struct HttpResponse
{
    int status = 200;
    QByteArray contentType; ///< "application/json"
    QByteArray body;
    HttpRequest::Pairs headers;       ///< further ones
    std::shared_ptr<HttpBody> stream; ///< when set, it is sent instead of `body`
};

/// Sends the answer to a request. Call it once, from any thread, now or later.
using HttpAnswer = std::function<void(HttpResponse)>;

/// Deals with a request in the HTTP thread. It must not wait: an answer that takes time is given
/// later.
using HttpFunction = std::function<void(const HttpRequest&, HttpAnswer)>;

/// {"error": sentence} with a status.
HttpResponse errorResponse(int status, const QString& sentence);

/// A JSON document.
HttpResponse jsonResponse(const QByteArray& document);

#endif
