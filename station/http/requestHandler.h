#ifndef REQUEST_HANDLER_H
#define REQUEST_HANDLER_H

#include "http/httpMessages.h"

/// What the HTTP thread asks about a request.
class RequestHandler
{
public:
    virtual ~RequestHandler() = default;

    /// Why the request is refused, known from its head alone; empty: it is let in. The body of a
    /// refused request is not kept.
    virtual std::optional<HttpResponse> refusal(const HttpRequest& withoutBody) = 0;

    /// Whether a stream may go on that a request has opened: not when the request would now be
    /// refused. It is asked of requests that were let in.
    virtual bool mayGoOn(const HttpRequest& request) const = 0;

    /// Answers a request that was let in. It must not wait.
    virtual void answer(const HttpRequest& request, const HttpAnswer& answer) = 0;
};

#endif
