#ifndef SECURITY_HEADERS_H
#define SECURITY_HEADERS_H

#include "http/httpMessages.h"

/// All headers of a response but those of its transfer: what the page may load and who may embed
/// it, the response's own, and that nothing is kept by a cache unless the response says so.
HttpRequest::Pairs allHeaders(const HttpResponse& response);

#endif
