#include "verbs/watchRows.h"

#include "plan/tagValue.h"
#include "verbs/tagChoice.h"
#include "wire/timeUnits.h"

namespace {

/// The texts with all digits, 0x00FF and 0b0101, may be longer than every decimal number.
int valueWidth(const Tag& tag)
{
    enum { PREFIX = 2, WORD_BITS = 16, WORD_HEX_DIGITS = 4 };
    if (tag.format == Tag::DECIMAL) return 0;
    return PREFIX + tag.units() * (tag.format == Tag::BINARY ? WORD_BITS : WORD_HEX_DIGITS);
}

} // namespace

WatchRow watchRow(const Tag& tag, const TagState& state, qint64 now)
{
    WatchRow row;
    row.name = tag.name;
    row.address = placeText(tag);
    row.label = labelText(tag);
    row.valueWidth = valueWidth(tag);
    if (!state.bytes.isEmpty()) row.value = tagValueText(tag, state.bytes);
    if (state.readAt >= 0) row.ageMs = (now - state.readAt) / MILLISECOND;
    row.changes = state.changes;
    row.good = state.good;
    row.trouble = state.trouble;
    return row;
}

QString linkEventText(const News::LinkEvent& event)
{
    if (event.connected) return QString::fromLatin1("link is back");
    return QLatin1String("link lost: ") + event.trouble;
}
