#ifndef RETRIES_H
#define RETRIES_H

#include <QString>

/// Counts a rejected reply to the frame in flight. Below retryLimit the frame stays, and the driver
/// offers it again. At the limit the request is given up: a write falls back, the list entry leaves
/// or rotates, and the next frame is another one.
/// @param length     bytes of the rejected reply
/// @param errorText  of a request that is given up: "length,station,address,area"
/// @return REPLY_RETRY or REPLY_GIVEN_UP
int rejectReply(int length, QString& errorText);

#endif
