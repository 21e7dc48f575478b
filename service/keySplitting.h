#ifndef KEY_SPLITTING_H
#define KEY_SPLITTING_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

/// Appends the key, cut into pieces of at most maxLen units, to out. With a maxLen below 1 the key
/// passes whole. With withData 1 each piece's data starts with its own units' values.
void groupingKey(const KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData);

#endif
