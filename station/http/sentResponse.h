#ifndef SENT_RESPONSE_H
#define SENT_RESPONSE_H

#include "http/httpMessages.h"

#include <microhttpd.h>

/// Called when a body has nothing to send yet, before the library is told. False: the body ends
/// here, and its connection with it.
using BodyRests = std::function<bool(const std::shared_ptr<HttpBody>&)>;

/// Hands a response to the library, with the headers that every response has.
MHD_Result sendResponse(MHD_Connection* connection, const HttpResponse& response,
                        BodyRests bodyRests);

/// A response as bytes, for a connection that the library does not know or no longer answers. The
/// connection closes behind it.
QByteArray lastResponse(const HttpResponse& response);

#endif
