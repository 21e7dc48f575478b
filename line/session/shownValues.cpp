#include "session/shownValues.h"

namespace {

enum { BYTE_BITS = 8 };

/// One byte, 0 or 1.
/// @param word  two bytes, low byte first
QByteArray bitOf(const QByteArray& word, int bit)
{
    const int byte = static_cast<unsigned char>(word.at(bit / BYTE_BITS));
    return QByteArray(1, static_cast<char>(byte >> bit % BYTE_BITS & 1));
}

} // namespace

void ShownValues::reset(size_t tags)
{
    m_shown.assign(tags, QByteArray());
    m_blocksSeen.clear();
}

/// The driver also reports changes in the gaps of a block. No tag shows these units. A changed word
/// changes only some of the bits that are shown through it.
std::set<int> ShownValues::takeChanged()
{
    std::set<int> noted;
    for (const NotedChange& change : m_driver.takeChanges()) {
        const std::vector<int>& at = m_tags.tagsAt(change.station, change.area, change.number);
        noted.insert(at.begin(), at.end());
    }
    std::set<int> changed;
    for (const int tag : noted) {
        const bool isBitOfWord = m_tags.place(tag).bitOfWord != PolledTags::Place::NO_BIT;
        if (fetch(tag) || !isBitOfWord) changed.insert(changed.end(), tag);
    }
    return changed;
}

void ShownValues::tell(const std::set<int>& changed, qint64 now)
{
    for (const int tag : changed)
        m_sink.tagValue(tag, m_shown[size_t(tag)], now);
}

/// Every tag is fetched at the first read of its block, because the driver does not report a first
/// value of 0.
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
        if (fetch(tag)) m_sink.tagValue(tag, m_shown[size_t(tag)], now);
    }
}

/// @return whether the shown value is another than before
bool ShownValues::fetch(int tag)
{
    const PolledTags::Place& place = m_tags.place(tag);
    QByteArray value = m_driver.value(place.station, place.area, place.number, place.units);
    if (place.bitOfWord != PolledTags::Place::NO_BIT) value = bitOf(value, place.bitOfWord);
    if (m_shown[size_t(tag)] == value) return false;
    m_shown[size_t(tag)] = value;
    return true;
}
