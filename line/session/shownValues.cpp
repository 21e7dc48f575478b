#include "session/shownValues.h"

#include "plan/sharedMemory.h"
#include "plan/tagSpan.h"

void ShownValues::reset(size_t tags)
{
    m_shown.assign(tags, QByteArray());
    m_isTrusted.assign(tags, false);
}

void ShownValues::distrust()
{
    m_isTrusted.assign(m_isTrusted.size(), false);
}

bool ShownValues::isReadWhole(int tag, const ReadBlock* read) const
{
    const Tag& told = m_tags.tag(tag);
    return told.units() == 1 || (read != nullptr && contains(*read, told));
}

/// The driver also reports changes in the gaps of a block. No tag shows these units.
std::set<int> ShownValues::takeChanged(const ReadBlock* read)
{
    std::set<int> noted;
    for (const NotedChange& change : m_driver.takeChanges()) {
        const std::vector<int>& at = m_tags.tagsAt(change.station, change.area, change.number);
        noted.insert(at.begin(), at.end());
    }
    std::set<int> changed;
    for (const int tag : noted) {
        if (!isReadWhole(tag, read))
            m_isTrusted[size_t(tag)] = false;
        else if (fetch(tag))
            changed.insert(tag);
    }
    return changed;
}

void ShownValues::tell(const std::set<int>& changed, qint64 now)
{
    for (const int tag : changed)
        m_sink.tagValue(tag, m_shown[size_t(tag)], now);
}

/// Every tag is fetched at its first read, because the driver does not report a first value of 0.
void ShownValues::read(const std::vector<int>& tags, bool driverTells, qint64 now)
{
    for (const int tag : tags) {
        if (!m_isTrusted[size_t(tag)] || !driverTells) fetch(tag);
        m_isTrusted[size_t(tag)] = true;
        m_sink.tagShown(tag, m_shown[size_t(tag)], now);
    }
}

void ShownValues::readBesides(const ReadBlock& block, qint64 now)
{
    for (int unit = 0; unit < block.count; ++unit) {
        for (const int tag : m_tags.tagsAt(block.station, block.area, block.number + unit)) {
            if (isReadWhole(tag, &block))
                fetchAndTell(tag, now);
            else
                m_isTrusted[size_t(tag)] = false;
        }
    }
}

void ShownValues::toBeWritten(int station, const QString& area, int number, qint64 now)
{
    for (const int tag : m_tags.tagsAt(station, area, number))
        fetchAndTell(tag, now);
}

void ShownValues::written(const VARIABLE& element, qint64 now)
{
    toBeWritten(element.station, element.regName, element.addr, now);
}

/// A tag of two words that was never read has no value yet, when one of them is written.
void ShownValues::fetchAndTell(int tag, qint64 now)
{
    if (m_shown[size_t(tag)].isEmpty() && m_tags.tag(tag).units() > 1) return;
    if (fetch(tag)) m_sink.tagValue(tag, m_shown[size_t(tag)], now);
}

/// @return whether the value is another than before
bool ShownValues::fetch(int tag)
{
    const PolledTags::Place& place = m_tags.place(tag);
    QByteArray value = m_driver.value(place.station, place.area, place.number, place.units);
    if (place.bitOfWord != PolledTags::Place::NO_BIT) value = bitOfWord(value, place.bitOfWord);
    if (m_shown[size_t(tag)] == value) return false;
    m_shown[size_t(tag)] = value;
    return true;
}
