#include "api/valueDocument.h"

#include "plan/tagText.h"
#include "values/valueJson.h"

namespace {

void appendTime(JsonText& json, const char* key, qint64 time)
{
    json.key(key);
    if (time == 0)
        json.null();
    else
        json.integer(time);
}

} // namespace

void appendValue(JsonText& json, const QString& link, const Tag& tag, const TagReading& reading,
                 bool isWritable)
{
    json.beginObject().key("link").text(link).key("tag").text(tag.name);
    json.key("station").integer(tag.station).key("address").text(tag.area + tag.address);
    json.key("type").text(tagTypeText(tag)).key("value").raw(valueJson(tag, reading.bytes));
    json.key("quality").word(qualityText(reading.quality));
    appendTime(json, "time", reading.time);
    appendTime(json, "changed", reading.changed);
    json.key("trouble").textOrNull(reading.trouble);
    json.key("writable").boolean(isWritable).endObject();
}

void appendChange(JsonText& json, const QString& link, const Tag& tag, const TagReading& before,
                  const TagReading& now)
{
    json.beginObject().key("link").text(link).key("tag").text(tag.name);
    if (before.bytes != now.bytes) json.key("value").raw(valueJson(tag, now.bytes));
    if (before.quality != now.quality) json.key("quality").word(qualityText(now.quality));
    if (before.time != now.time) appendTime(json, "time", now.time);
    if (before.changed != now.changed) appendTime(json, "changed", now.changed);
    if (before.trouble != now.trouble) json.key("trouble").textOrNull(now.trouble);
    json.endObject();
}
