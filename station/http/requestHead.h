#ifndef REQUEST_HEAD_H
#define REQUEST_HEAD_H

#include "http/requestHandler.h"

/// The head of a request as it came.
struct RequestHead
{
    QByteArray method;
    QByteArray target;          ///< "/api/v1/values?link=plc", not decoded
    QByteArray version;         ///< "HTTP/1.1"
    HttpRequest::Pairs headers; ///< names in lower case
    size_t bytes = 0;           ///< of the whole head
};

/// What becomes of a request when its head is complete.
struct JudgedHead
{
    enum Sequel {
        BODY_IS_READ,   ///< then the request or the refusal is answered
        CONNECTION_ENDS ///< with the refusal, at once: where the next request begins is unknown, or
                        ///< far away
    };

    HttpRequest request; ///< without its body
    std::optional<HttpResponse> refusal;
    Sequel sequel = BODY_IS_READ;
};

/// Judges a head: first whether its shape is sound, then whether the handler
/// lets it in.
JudgedHead judgedHead(const RequestHead& head, const QString& peer, RequestHandler& handler);

#endif
