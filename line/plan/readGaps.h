#ifndef READ_GAPS_H
#define READ_GAPS_H

#include "plan/readPlan.h"

/// The words that a plan reads although no tag of their block needs them, in words. The spare words
/// at the end of a block are no gap, see ReadBlock::spare.
struct ReadGaps
{
    int words = 0;   ///< in all blocks
    int longest = 0; ///< the longest run of such words
};

/// @param tags  the tags of the plan; the blocks name them by their indices
ReadGaps readGaps(const std::vector<ReadBlock>& blocks, const std::vector<Tag>& tags);

#endif
