#include "api/historyText.h"

#include "plan/csvText.h"
#include "plan/tagValue.h"
#include "values/jsonText.h"
#include "values/valueJson.h"

#include <cmath>
#include <limits>

namespace {

/// A float of the history is a double of the same value, whose shortest text is longer.
bool isFloat(const Tag& tag, double value)
{
    if (tag.type != Tag::FLOAT32) return false;
    return !std::isfinite(value) ||
           (std::fabs(value) <= double(std::numeric_limits<float>::max()) &&
            double(float(value)) == value);
}

QByteArray numberJson(const Tag& tag, double value)
{
    if (isFloat(tag, value)) return valueJson(tag, tagFloatBytes(tag, float(value)));
    return JsonText().number(value).document();
}

void appendBucket(JsonText& json, const Tag& tag, const HistoryBucket& bucket)
{
    json.beginArray().integer(bucket.time);
    for (const double value : {bucket.minimum, bucket.maximum, bucket.last}) {
        if (bucket.isGood)
            json.raw(numberJson(tag, value));
        else
            json.null();
    }
    json.endArray();
}

} // namespace

QByteArray historyDocument(const HistoryQuery& query, const Tag& tag,
                           const std::vector<HistoryBucket>& buckets)
{
    JsonText json;
    json.beginObject().key("link").text(query.link).key("tag").text(query.tag);
    json.key("from").integer(query.from).key("to").integer(query.until);
    json.key("buckets").beginArray();
    for (const HistoryBucket& bucket : buckets)
        appendBucket(json, tag, bucket);
    return json.endArray().endObject().document();
}

QByteArray historyCsvHead()
{
    return QByteArrayLiteral("time,link,tag,value,quality\r\n");
}

QByteArray historyCsvLine(const HistoryQuery& query, const Tag& tag, const HistoryRow& row)
{
    QByteArray value;
    if (row.hasValue) value = numberJson(tag, row.value).replace('"', "");
    return QByteArray::number(row.time) + ',' + csvField(query.link).toUtf8() + ',' +
           csvField(query.tag).toUtf8() + ',' + value + ',' + qualityText(row.quality) + "\r\n";
}
