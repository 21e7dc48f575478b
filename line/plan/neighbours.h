#ifndef NEIGHBOURS_H
#define NEIGHBOURS_H

#include "plan/readPlan.h"

/// Registers that one request reads for a block: bits come as the register that holds their group.
int registersOf(const ReadBlock& block);

/// Gives blocks that follow one another at one station replies of different lengths, by a word or
/// two more, so that an answer that comes twice is seen by the very next exchange. The order is the
/// driver's: by station, area and number, round and round.
/// @param mostWords  longest block of words, 2 to 125
/// @return how many blocks still have the length of the block before them: bits, whose groups have
///         one length, and words where a block or its area ends. A station's only block does not
///         count.
int differNeighbours(std::vector<ReadBlock>& blocks, int mostWords);

#endif
