#ifndef REFUSED_BLOCK_H
#define REFUSED_BLOCK_H

#include "plan/readPlan.h"

#include <vector>

/// The blocks to read instead of a block that the PLC refused because of its addresses. Together
/// they read the block's tags. Empty: nothing is left to split, so the refusal speaks of the tags.
///
///     spare words behind the tags    -> the block without them
///     tags with gaps between them    -> two parts, cut at the gap that is nearest to the middle
///     tags without gaps              -> two halves
///     tags of one place              -> empty
///
/// A tag of two words is never split, and tags of the same words stay together: their places are
/// cut from each other only when they differ. The bits of one word have one place, and a block of a
/// bit area is one word. Parts may share words where tags overlap.
///
/// A block of n places needs at most about 2 log2(n) + 6 further reads for each refused place:
/// every cut leaves the refused place in a part of half the size. A cut at a gap may leave it in a
/// larger part, which has fewer gaps.
std::vector<ReadBlock> partsOfRefused(const ReadBlock& refused, const std::vector<Tag>& tags);

/// Whether a refusal speaks of the addresses or the number of words, so that a part of the block
/// may be accepted: the exceptions 2 (illegal address) and 3 (illegal value). Exception 3 is the
/// answer to more words than the PLC gives in one reply. The others refuse any part as well:
/// 1 speaks of the function, 4 of the device, 5 and 6 of the moment, 10 and 11 of the way.
bool isSplitByException(int exceptionCode);

#endif
