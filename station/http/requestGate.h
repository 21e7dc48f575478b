#ifndef REQUEST_GATE_H
#define REQUEST_GATE_H

#include "http/hostName.h"
#include "http/httpMessages.h"

/// Reads the one `Host` of a request.
/// @param refusal  set when there is none, more than one, or one that does not name the station
std::optional<HostAndPort> hostOf(const HttpRequest& request, const QStringList& hostNames,
                                  HttpResponse& refusal);

/// Why a POST is refused: a page of another site could have sent it. A form cannot send JSON or
/// X-Kakb, and a script of another site may not; a browser says where a request comes from.
std::optional<HttpResponse> postRefusal(const HttpRequest& request, const HostAndPort& host);

#endif
