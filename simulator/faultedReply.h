#ifndef FAULTED_REPLY_H
#define FAULTED_REPLY_H

#include "faultSchedule.h"
#include "frame.h"

/// The random numbers that a fault's bytes take. They are drawn when a request comes, so that the
/// order in which requests are served changes no reply.
using Draws = std::vector<std::uint32_t>;

Draws drawsFor(Fault fault, std::mt19937& random);

/// The refusal of a request: station, function with its top bit set, code, checksum.
Bytes exceptionReply(const Bytes& request, int code);

/// What a fault makes of a reply's bytes. Faults that leave the bytes alone return them as they
/// are.
/// @param reply  a whole reply with its checksum
/// @param draws  those of drawsFor() the same fault
Bytes faultedReply(Fault fault, Bytes reply, const Draws& draws);

#endif
