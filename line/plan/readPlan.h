#ifndef READ_PLAN_H
#define READ_PLAN_H

#include "plan/tag.h"
#include "plan/wireCost.h"

#include <vector>

/// One read request of the plan.
struct ReadBlock
{
    int station = 0;
    QString area;
    int number = 0;        ///< address number of the first unit
    int count = 0;         ///< words, or the bits of one group of 16
    std::vector<int> tags; ///< indices of the tags that it brings, ascending
    int spare = 0;         ///< words at its end that no tag needs, see differNeighbours()
};

/// The blocks that read all tags in the least time on the wire, and of those the fewest.
///
/// Words of one station and area are taken together across gaps wherever reading the gap costs less
/// than another request; a tag of two words is never torn. Bits come as whole groups of 16, from
/// the group's first bit, because the driver decodes a reply to bits from there. Blocks are sorted
/// by station, area and number.
/// @param mostWords  longest block of words, 2 to 125
std::vector<ReadBlock> shortestReads(const std::vector<Tag>& tags, const WireCost& cost,
                                     int mostWords);

/// The same with blocks that differ from their neighbours, see differNeighbours(). On a line of
/// 38400 baud that takes at most 4 % longer from ten blocks on. A few small blocks may take 6 %
/// longer, as three in a round need three lengths, and so do two full blocks, which become three.
std::vector<ReadBlock> planReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords);

/// One block a tag (bits: their group of 16), for comparison. Tags whose blocks start at the same
/// unit share one, because the driver joins them by itself.
std::vector<ReadBlock> planSingleReads(const std::vector<Tag>& tags);

/// Time on the wire for one cycle over the blocks, in microseconds.
qint64 cycleTime(const std::vector<ReadBlock>& blocks, const WireCost& cost);

#endif
