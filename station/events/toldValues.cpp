#include "events/toldValues.h"

#include "api/valueDocument.h"

namespace {

/// A value that went and came back is a change, too: it has another time of its change.
bool isChanged(const TagReading& told, const TagReading& now)
{
    return told.changed != now.changed || told.quality != now.quality || told.bytes != now.bytes ||
           told.trouble != now.trouble;
}

} // namespace

bool ToldValues::setLinks(const Links& links, bool areWritesAllowed)
{
    bool areSame = m_links.size() == links.size() && m_areWritesAllowed == areWritesAllowed;
    for (size_t link = 0; areSame && link < links.size(); ++link)
        areSame = m_links[link].values == links[link];
    if (areSame) return false;
    m_areWritesAllowed = areWritesAllowed;
    m_links.clear();
    for (const std::shared_ptr<const LinkValues>& values : links) {
        Link link;
        link.values = values;
        link.told = values->readings();
        m_links.push_back(std::move(link));
    }
    return true;
}

void ToldValues::clear()
{
    m_links.clear();
}

QByteArray ToldValues::changes()
{
    JsonText json;
    json.beginObject().key("full").boolean(false).key("values").beginArray();
    bool isAny = false;
    for (Link& link : m_links) {
        const std::vector<TagReading> readings = link.values->readings();
        for (size_t tag = 0; tag < readings.size(); ++tag) {
            TagReading& told = link.told[tag];
            if (!isChanged(told, readings[tag])) continue;
            appendChange(json, link.values->name(), link.values->tags()[tag], told, readings[tag]);
            told = readings[tag];
            isAny = true;
        }
    }
    return isAny ? json.endArray().endObject().document() : QByteArray();
}

QByteArray ToldValues::seen()
{
    JsonText json;
    json.beginArray();
    for (Link& link : m_links) {
        const std::vector<TagReading> readings = link.values->readings();
        for (size_t tag = 0; tag < readings.size(); ++tag) {
            TagReading& told = link.told[tag];
            if (isChanged(told, readings[tag])) continue; // its time goes with the change
            if (told.time == readings[tag].time) continue;
            told.time = readings[tag].time;
            json.beginArray().text(link.values->name()).text(link.values->tags()[tag].name);
            json.integer(told.time).endArray();
        }
    }
    return json.endArray().document();
}

QByteArray ToldValues::all() const
{
    JsonText json;
    json.beginObject().key("full").boolean(true).key("values").beginArray();
    for (const Link& link : m_links) {
        for (size_t index = 0; index < link.told.size(); ++index) {
            const Tag& tag = link.values->tags()[index];
            appendValue(json, link.values->name(), tag, link.told[index],
                        isWritable(tag, m_areWritesAllowed));
        }
    }
    return json.endArray().endObject().document();
}
