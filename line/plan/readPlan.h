#ifndef READ_PLAN_H
#define READ_PLAN_H

#include "plan/tag.h"
#include "plan/wireCost.h"

#include <vector>

/// One read request of the plan. A block of words may have tags of bits: their values are bits of
/// the words, see wordBitOf().
struct ReadBlock
{
    int station = 0;
    QString area;
    int number = 0;        ///< address number of the first unit
    int count = 0;         ///< words; or the bits of one group of 16
    std::vector<int> tags; ///< indices of the tags in the block, ascending
    int spare = 0;         ///< words at the end that no tag needs, see differNeighbours()
    ReadRate rate;         ///< see planRatedReads(); plans without rates leave EVERY_CYCLE
};

/// No limit to the gaps that a plan reads: every gap is shorter.
enum { ANY_GAP = 65535 };

/// The blocks that read all tags in the least time on the wire. Among plans of equal time it is the
/// plan with the fewest blocks.
///
/// Words of one station and area are read together across a gap when reading the gap takes less
/// time than another request. A tag of two words is never split. Bits are read as the words that
/// hold them, together with the tags of these words. Only bits of a single word that shares no
/// block with other words are read as a group of 16, from the group's first bit: the driver decodes
/// replies with bits from that bit on. Blocks are sorted by station, area and number.
/// @param mostWords  longest block of words, 2 to 125
/// @param mostGap    longest run of words in a block that no tag of the block needs; 0: none
std::vector<ReadBlock> shortestReads(const std::vector<Tag>& tags, const WireCost& cost,
                                     int mostWords, int mostGap = ANY_GAP);

/// The plan of shortestReads() with different lengths of neighbouring blocks, see
/// differNeighbours(). The spare words that make a length different are no gap. On a line of 38400
/// baud a plan of ten or more blocks takes at most 4 % longer. A few small blocks may take 6 %
/// longer: three blocks in a cycle need three lengths. Two full blocks may also take 6 % longer,
/// because they become three.
std::vector<ReadBlock> planReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords,
                                 int mostGap = ANY_GAP);

/// One block for each tag (for a bit: its group of 16), for comparison. Tags whose blocks start at
/// the same unit share a block, because the driver would join their blocks.
std::vector<ReadBlock> planSingleReads(const std::vector<Tag>& tags);

/// Time on the wire for one cycle over the blocks, in microseconds.
qint64 cycleTime(const std::vector<ReadBlock>& blocks, const WireCost& cost);

#endif
