#include "session/polledTags.h"

#include "plan/sharedMemory.h"

#include <utility>

namespace {

enum { NO_BLOCK = -1, BIT_AREA = -1 };

} // namespace

void PolledTags::set(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    m_tags = std::move(tags);
    m_blocks = std::move(blocks);
    m_tagsByUnit.clear();
    m_blocksByStart.clear();
    setPlaces();
    for (size_t i = 0; i < m_tags.size(); ++i) {
        const Place& place = m_places[i];
        for (int unit = 0; unit < place.units; ++unit)
            m_tagsByUnit[Unit(place.station, place.area, place.number + unit)].push_back(int(i));
    }
    for (size_t i = 0; i < m_blocks.size(); ++i) {
        const ReadBlock& block = m_blocks[i];
        m_blocksByStart[Unit(block.station, block.area, block.number)] = int(i);
    }
}

void PolledTags::setPlaces()
{
    m_places.clear();
    for (const Tag& tag : m_tags)
        m_places.push_back({tag.station, tag.area, tag.number, tag.units(), Place::NO_BIT});
    for (const ReadBlock& block : m_blocks) {
        if (isBitArea(block.area)) continue;
        for (const int index : block.tags) {
            const Tag& tag = m_tags[size_t(index)];
            if (!tag.isBit()) continue;
            const WordBit word = wordBitOf(tag.area, tag.number);
            m_places[size_t(index)] = {tag.station, word.area, word.number, 1, word.bit};
        }
    }
}

/// A one-shot read may read only the first words of a block, for example after a write.
int PolledTags::blockOf(const VARIABLE& read) const
{
    const auto found = m_blocksByStart.find(Unit(read.station, read.regName, read.addr));
    if (found == m_blocksByStart.end()) return NO_BLOCK;
    const ReadBlock& block = m_blocks[size_t(found->second)];
    return read.count < block.count - block.spare ? int(NO_BLOCK) : found->second;
}

std::optional<ReadBlock> PolledTags::wordOfBit(const VARIABLE& written) const
{
    if (!isBitArea(written.regName)) return std::nullopt;
    const WordBit word = wordBitOf(written.regName, written.addr);
    if (tagsAt(written.station, word.area, word.number).empty()) return std::nullopt;
    ReadBlock block;
    block.station = written.station;
    block.area = word.area;
    block.number = word.number;
    block.count = 1;
    return block;
}

bool PolledTags::dropSpare(int index)
{
    ReadBlock& block = m_blocks[size_t(index)];
    block.count -= block.spare;
    return std::exchange(block.spare, 0) > 0;
}

std::set<int> PolledTags::stations() const
{
    std::set<int> all;
    for (const ReadBlock& block : m_blocks)
        all.insert(block.station);
    return all;
}

std::vector<int> PolledTags::tagsOfStation(int station) const
{
    std::vector<int> tags;
    for (size_t i = 0; i < m_tags.size(); ++i) {
        if (m_tags[i].station == station) tags.push_back(int(i));
    }
    return tags;
}

std::vector<int> PolledTags::allTags() const
{
    std::vector<int> tags;
    for (size_t i = 0; i < m_tags.size(); ++i)
        tags.push_back(int(i));
    return tags;
}

const std::vector<int>& PolledTags::tagsAt(int station, const QString& area, int number) const
{
    static const std::vector<int> none;
    const auto found = m_tagsByUnit.find(Unit(station, area, number));
    return found == m_tagsByUnit.end() ? none : found->second;
}

KEY_ADDRESS PolledTags::keyOf(const ReadBlock& block)
{
    KEY_ADDRESS key;
    key.station = block.station;
    key.regName = block.area;
    key.addr = block.number;
    key.count = block.count;
    key.unitMode = isBitArea(block.area) ? int(BIT_AREA) : 0;
    return key;
}

KEY_ADDRESS PolledTags::oneShotKeyOf(const ReadBlock& block)
{
    KEY_ADDRESS key = keyOf(block);
    if (isBitArea(key.regName)) key.count = 1;
    return key;
}
