#ifndef RATED_READS_H
#define RATED_READS_H

#include "plan/readPlan.h"

#include <optional>
#include <vector>

/// The blocks that read tags of several rates.
struct RatedReads
{
    std::vector<ReadBlock> blocks; ///< by station, area and number
    qint64 cycle = 0; ///< planned time from the start of a cycle to the next start, microseconds
};

/// Plans each rate by itself with planReads(), the fastest rate first. A slower tag whose words lie
/// inside a block of a faster rate belongs to that block: it is read there free of charge. Spare
/// words do not count. Blocks of different rates may share words.
///
///     rate      faster  <------------------------------------------>  slower
///               intervals below a cycle, fast, longer intervals, once
///
/// @param pace  shortest time from the start of a cycle to the next start, microseconds; 0: none
/// @param mostGap  as of planReads()
RatedReads planRatedReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords,
                          qint64 pace, int mostGap = ANY_GAP);

bool isReadInEveryCycle(const ReadBlock& block);

/// The longest planned time between two reads of a tag, in microseconds. A value that is much older
/// has missed a turn. Empty: the tag is read once.
/// @param cycle  of the plan
std::optional<qint64> turnOf(const Tag& tag, qint64 cycle);

/// The average share of a second that the blocks with intervals take on the line, 0 and more.
double averageLoad(const std::vector<ReadBlock>& blocks, const WireCost& cost);

#endif
