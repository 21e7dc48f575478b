#ifndef FAULTED_REPLY_H
#define FAULTED_REPLY_H

#include "faultSchedule.h"
#include "frame.h"

/// The random numbers for a fault's bytes. They are drawn when a request comes, so that the order
/// of service changes no reply.
using Draws = std::vector<std::uint32_t>;

Draws drawsFor(Fault fault, std::mt19937& random);

/// The refusal of a request: station, function with its top bit set, code, checksum.
Bytes exceptionReply(const Bytes& request, int code);

/// The reply's bytes with the fault applied; none when the fault drops the reply. A fault that
/// changes no bytes returns them unchanged.
/// @param reply  a whole reply with its checksum
/// @param draws  from drawsFor() with the same fault
Bytes faultedReply(Fault fault, Bytes reply, const Draws& draws);

#endif
