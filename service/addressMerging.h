#ifndef ADDRESS_MERGING_H
#define ADDRESS_MERGING_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

enum MergePurpose {
    MERGE_FOR_CYCLE = 1, ///< drops unknown areas, sorts, and merges across gaps too
    MERGE_FOR_RECIPE = 2 ///< takes keys sorted as they are, and notes where blocks start
};

/// Replaces keys by the read blocks that cover them. A block keeps every field of the key that
/// opened it but the count. For a recipe, driver.blockStartIndex receives the index of each block's
/// first key.
void addrMerge(QList<KEY_ADDRESS>& keys, int mode);

#endif
