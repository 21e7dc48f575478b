#ifndef REQUEST_FRAMING_H
#define REQUEST_FRAMING_H

#include "http/requestHead.h"

enum { MOST_HEAD_BYTES = 8192, MOST_BODY_BYTES = 65536 };

/// Why it is unsound to read on behind this head: it is too large, its headers are not well formed,
/// or two readers could disagree on where its body ends, so that one takes for a body what the
/// other takes for a request. Empty: nothing of that is so.
std::optional<HttpResponse> framingRefusal(const RequestHead& head);

/// The answer to a body of more than MOST_BODY_BYTES.
HttpResponse bodyTooLarge();

#endif
