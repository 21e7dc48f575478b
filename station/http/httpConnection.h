#ifndef HTTP_CONNECTION_H
#define HTTP_CONNECTION_H

#include "http/connectionTimes.h"
#include "http/peerAddress.h"
#include "http/pendingAnswer.h"
#include "http/requestHead.h"

#include <microhttpd.h>

/// A request on its way.
///
///     HEAD --> BODY --> WAITING --> ANSWERED
///       |                  |           ^
///       +--- refused, -----|-----------+
///            at once       |
///                          +-----> STREAMED --> CUT
///                    a body that is made        its right has gone
///                    while it is sent
struct HttpExchange
{
    enum Stage { HEAD, BODY, WAITING, ANSWERED, STREAMED, CUT };

    Stage stage = HEAD;
    QByteArray target;
    JudgedHead head;
    qint64 bodyBytes = 0;                  ///< that came, whether they are kept or not
    std::shared_ptr<PendingAnswer> answer; ///< while WAITING
};

/// A client's connection. Only the HTTP thread uses it.
struct HttpConnection
{
    enum Rest {
        RUNS,
        AWAITS_ANSWER, ///< of a route; the library has suspended it
        AWAITS_BODY    ///< of a stream; the library has suspended it
    };

    HttpConnection(MHD_Connection* libraryHandle, int socketNumber, PeerAddress from, qint64 now)
        : handle(libraryHandle), socket(socketNumber), peer(std::move(from)), times(now)
    {
    }

    MHD_Connection* const handle;
    const int socket;
    const PeerAddress peer;
    ConnectionTimes times;
    std::unique_ptr<HttpExchange> exchange = std::make_unique<HttpExchange>(); ///< never null
    std::shared_ptr<HttpBody> stream; ///< while AWAITS_BODY
    Rest rest = RUNS;
};

#endif
