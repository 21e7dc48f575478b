#include "session/shownValues.h"

void ShownValues::reset(size_t tags)
{
    m_shown.assign(tags, QByteArray());
    m_blocksSeen.clear();
}

/// Of a block with gaps the driver reports units that no tag shows as well.
std::set<int> ShownValues::takeChanged()
{
    std::set<int> changed;
    for (const NotedChange& change : m_driver.takeChanges()) {
        const std::vector<int>& at = m_tags.tagsAt(change.station, change.area, change.number);
        changed.insert(at.begin(), at.end());
    }
    for (const int tag : changed)
        fetch(tag);
    return changed;
}

void ShownValues::tell(const std::set<int>& changed, qint64 now)
{
    for (const int tag : changed)
        m_sink.tagValue(tag, m_shown[size_t(tag)], now);
}

/// The driver does not report a first value of 0, so the first time every tag is looked at.
void ShownValues::blockRead(int block, bool driverTells, qint64 now)
{
    const bool first = m_blocksSeen.insert(block).second;
    for (const int tag : m_tags.block(block).tags) {
        if (first || !driverTells) fetch(tag);
        m_sink.tagRead(tag, m_shown[size_t(tag)], now);
    }
}

void ShownValues::written(const VARIABLE& element, qint64 now)
{
    for (const int tag : m_tags.tagsAt(element.station, element.regName, element.addr)) {
        const QByteArray shown = m_shown[size_t(tag)];
        fetch(tag);
        if (m_shown[size_t(tag)] != shown) m_sink.tagValue(tag, m_shown[size_t(tag)], now);
    }
}

void ShownValues::fetch(int tag)
{
    const Tag& fetched = m_tags.tag(tag);
    m_shown[size_t(tag)] =
        m_driver.value(fetched.station, fetched.area, fetched.number, fetched.units());
}
