#include "topics/jsonTopics.h"

#include "broker/topicLevels.h"

#include <QStringList>

#include <algorithm>
#include <map>

namespace {

const QLatin1Char SLASH('/');
const QLatin1String AVAILABILITY("availability");

} // namespace

JsonTopics::JsonTopics(const QString& node, const std::vector<EdgeDevice>& devices)
    : m_prefix(QLatin1String("kakb/") + topicLevel(node) + SLASH)
{
    std::vector<QString> links;
    std::map<QString, std::vector<QString>> tags; // by link
    for (const EdgeDevice& device : devices) {
        if (tags.count(device.link) == 0) links.push_back(device.link);
        std::vector<QString>& ofLink = tags[device.link];
        for (const Tag& tag : device.tags)
            ofLink.push_back(tag.name);
    }
    const std::vector<QString> levels = topicLevels(links);
    for (size_t at = 0; at < links.size(); ++at)
        m_levels.insert(links[at], levels[at]);
    for (const auto& [link, names] : tags) {
        const std::vector<QString> ofTags = topicLevels(names);
        for (size_t at = 0; at < names.size(); ++at)
            m_tagLevels.insert({link, names[at]}, ofTags[at]);
    }
}

QString JsonTopics::status() const
{
    return m_prefix + QLatin1String("status");
}

QString JsonTopics::sets() const
{
    return m_prefix + QLatin1String("+/+/set");
}

QString JsonTopics::ofLink(const QString& link) const
{
    return m_prefix + m_levels.value(link) + SLASH;
}

QString JsonTopics::availability(const QString& link, int station) const
{
    return ofLink(link) + QString::number(station) + SLASH + AVAILABILITY;
}

QString JsonTopics::state(const QString& link, const QString& tag) const
{
    return ofLink(link) + m_tagLevels.value({link, tag});
}

bool JsonTopics::isRetained(const QString& topic) const
{
    if (!topic.startsWith(m_prefix)) return false;
    const QStringList levels = topic.mid(m_prefix.size()).split(SLASH);
    const bool areLevels = std::all_of(levels.begin(), levels.end(), [](const QString& level) {
        return !level.isEmpty() && topicLevel(level) == level;
    });
    if (levels.size() == 3) return areLevels && levels.last() == AVAILABILITY;
    return areLevels && levels.size() == 2;
}
