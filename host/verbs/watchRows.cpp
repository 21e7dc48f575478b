#include "verbs/watchRows.h"

#include "plan/tagValue.h"
#include "verbs/tagChoice.h"
#include "wire/timeUnits.h"

WatchRow watchRow(const Tag& tag, const TagState& state, qint64 now)
{
    WatchRow row;
    row.name = tag.name;
    row.address = placeText(tag);
    row.label = labelText(tag);
    if (!state.bytes.isEmpty()) row.value = tagValueText(tag, state.bytes);
    if (state.readAt >= 0) row.ageMs = (now - state.readAt) / MILLISECOND;
    row.changes = state.changes;
    row.good = state.good;
    row.trouble = state.trouble;
    return row;
}
