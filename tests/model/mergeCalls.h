#ifndef MERGE_CALLS_H
#define MERGE_CALLS_H

#include "calls.h"
#include "randomWorld.h"

namespace model {

MergeCall mergeOfAnyKeys(RandomSource& random, RandomWorld& world);

/// Short keys side by side, where it matters which ones join first.
MergeCall mergeOfNeighbours(RandomSource& random, RandomWorld& world);

} // namespace model

#endif
