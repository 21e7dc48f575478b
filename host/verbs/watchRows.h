#ifndef WATCH_ROWS_H
#define WATCH_ROWS_H

#include "output/watchRow.h"
#include "plan/tag.h"
#include "session/sharedValues.h"

/// The row of a tag in a watch.
/// @param now  microseconds, on the clock of TagState::readAt
WatchRow watchRow(const Tag& tag, const TagState& state, qint64 now);

/// An event of the link in words.
QString linkEventText(const News::LinkEvent& event);

#endif
