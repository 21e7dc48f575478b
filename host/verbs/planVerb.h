#ifndef PLAN_VERB_H
#define PLAN_VERB_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"
#include "wire/lineTiming.h"

#include <cstdio>
#include <vector>

/// Prints the blocks that read the tags. Each block has the driver's request and the length of the
/// reply. Also prints the time of a cycle with these blocks and with one request for each tag, the
/// pace, the load of the blocks that are not read in every cycle, and the words that the blocks
/// read in gaps. It starts the driver, so no other StartedDriver may exist.
/// @param turnaround  microseconds before a station begins its answer
/// @param pace        shortest time from the start of a cycle to the next start, microseconds
/// @param mostGap     longest gap that a request reads, see planReads()
/// @param json        prints one JSON object on one line instead of a table. Its times are
///                    microseconds. They are null on a network without a turnaround, where requests
///                    take no time.
void printPlan(std::FILE* out, const std::vector<Tag>& tags, const LineTiming& timing,
               qint64 turnaround, qint64 pace, int mostGap, const DriverLibrary& driver, bool json);

#endif
