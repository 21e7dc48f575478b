#ifndef MERGE_RULE_H
#define MERGE_RULE_H

#include "quorvane_ka_kb_plc.h"

enum MergeMode {
    MERGE_ADJACENT = 0, ///< b may not start after the end of a
    MERGE_WITH_GAP = 1  ///< a gap up to the merge limit is read along
};

/// Says whether b may join the read block that starts at a; a comes first in sort order.
/// Words join only at equal addresses, bits only within one group of 16, because decoding can take
/// no more out of one reply.
/// @return 0 when it may, 1 when not
int judgeAddrMerge(const KEY_ADDRESS& a, const KEY_ADDRESS& b, int mode);

#endif
