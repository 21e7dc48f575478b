#ifndef ADDRESS_MERGING_H
#define ADDRESS_MERGING_H

#include "areaRow.h"
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

/// Counts a key's units in words, in an area with the given row. Turns a variable inside a unit
/// ("MW_BIT") into the units that hold it; a key that gets past the test for exact area names has
/// no such suffix.
void normaliseKey(AreaRow row, KEY_ADDRESS& key);

#endif
