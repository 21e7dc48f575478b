#ifndef PLAN_VERB_H
#define PLAN_VERB_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"
#include "wire/lineTiming.h"

#include <cstdio>
#include <vector>

/// Prints the blocks that read the tags, each with the request that the driver builds for it and
/// the length of its reply, and the time of one cycle beside that without grouping. Starts the
/// driver for itself, so no StartedDriver may be alive.
/// @param turnaround  microseconds that a station takes to begin its answer
/// @param json        one JSON object on one line instead of a table; its times are microseconds,
///                    null on a network without a turnaround, where requests take no time
void printPlan(std::FILE* out, const std::vector<Tag>& tags, const LineTiming& timing,
               qint64 turnaround, const DriverLibrary& driver, bool json);

#endif
