#ifndef REQUEST_TARGET_H
#define REQUEST_TARGET_H

#include "http/httpMessages.h"

/// The target of a request, decoded.
struct RequestTarget
{
    QByteArray path;
    HttpRequest::Pairs query;
};

/// Reads "/path?key=value&key=value". Percent signs are decoded once, in the path, the keys and the
/// values; a plus of the query is a space.
/// @return empty when it does not begin with a slash, a percent sign has no two digits behind it,
/// or
///         a part holds a control character or is no UTF-8 after the decoding
std::optional<RequestTarget> requestTarget(const QByteArray& text);

#endif
