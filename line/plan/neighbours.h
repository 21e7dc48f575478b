#ifndef NEIGHBOURS_H
#define NEIGHBOURS_H

#include "plan/readPlan.h"

/// Number of registers that the request of a block reads. Bits are read as the register of their
/// group.
int registersOf(const ReadBlock& block);

/// Lengthens blocks by one or two words, so that consecutive blocks of a station have replies of
/// different lengths. The next exchange can then recognise an answer that comes twice. The order of
/// blocks is the driver's polling order: by station, area and number, and then from the start
/// again.
/// @param mostWords  longest block of words, 2 to 125
/// @return number of blocks that still have the length of the block before them: groups of bits,
///         which cannot be longer, and blocks of words that reach a limit of the block or area.
///         A station's only block does not count.
int differNeighbours(std::vector<ReadBlock>& blocks, int mostWords);

#endif
