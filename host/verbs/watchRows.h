#ifndef WATCH_ROWS_H
#define WATCH_ROWS_H

#include "output/watchRow.h"
#include "plan/tag.h"
#include "session/sharedValues.h"

/// A tag as a watch shows it at a time.
WatchRow watchRow(const Tag& tag, const TagState& state, qint64 now);

#endif
