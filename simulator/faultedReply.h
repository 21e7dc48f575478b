#ifndef FAULTED_REPLY_H
#define FAULTED_REPLY_H

#include "faultSchedule.h"
#include "frame.h"

/// The refusal of a request: station, function with its top bit set, code, checksum.
Bytes exceptionReply(const Bytes& request, int code);

/// What a fault makes of a reply's bytes. Faults that leave the bytes alone return them as they
/// are.
/// @param reply  a whole reply with its checksum
Bytes faultedReply(Fault fault, Bytes reply, std::mt19937& random);

#endif
