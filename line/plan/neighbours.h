#ifndef NEIGHBOURS_H
#define NEIGHBOURS_H

#include "plan/readPlan.h"

/// Number of registers that the request of a block reads. Bits are read as the register of their
/// group.
int registersOf(const ReadBlock& block);

/// Whether a cycle reads block `a` before block `b`: by station, area (MW, IW, QW, MX, IX, QX) and
/// number, the order in which the driver sorts blocks.
bool isReadBefore(const ReadBlock& a, const ReadBlock& b);

/// Lengthens blocks by one or two words, so that consecutive blocks of a station have replies of
/// different lengths. The next exchange can then recognise an answer that comes twice. The order of
/// blocks is that of isReadBefore(), and then from the start again.
/// @param mostWords  longest block of words, 2 to 125
/// @return number of blocks that still have the length of the block before them: groups of bits,
///         which cannot be longer, and blocks of words that reach a limit of the block or area.
///         A station's only block does not count.
int differNeighbours(std::vector<ReadBlock>& blocks, int mostWords);

#endif
