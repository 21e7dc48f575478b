#ifndef REFUSALS_H
#define REFUSALS_H

#include "requestedMemory.h"

#include <string>
#include <vector>

enum RefusedAccess { REFUSES_EVERYTHING, REFUSES_WRITES };

/// Memory of one station whose use is refused with an exception.
struct Refusal
{
    int station = 1;
    MemorySpan span;
    int code = 2; ///< 1 to 255
    RefusedAccess access = REFUSES_EVERYTHING;
};

/// A refusal from "[STATION:]FIRST[..LAST][:CODE][:write]".
/// @return what is wrong with the text; empty when it is right and `refusal` is set
std::string parseRefusal(const std::string& text, Refusal& refusal);

/// The exception code of the first refusal that concerns the request; nothing when none does. Bits
/// and words are the same memory: the refusal of a word also concerns its bits.
/// @param station  that executes the request; for a broadcast each of them
std::optional<int> refusalOf(const std::vector<Refusal>& refusals, const Bytes& request,
                             int station);

#endif
