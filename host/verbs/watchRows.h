#ifndef WATCH_ROWS_H
#define WATCH_ROWS_H

#include "output/watchView.h"
#include "plan/tag.h"
#include "session/hostBoard.h"

/// A tag as a watch shows it at a time.
WatchRow watchRow(const Tag& tag, const TagState& state, qint64 now);

#endif
