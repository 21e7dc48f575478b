#include "session/polledTags.h"

#include "plan/sharedMemory.h"
#include "plan/tagSpan.h"

#include <algorithm>
#include <utility>

namespace {

enum { BIT_AREA = -1 };

} // namespace

void PolledTags::set(std::vector<Tag> tags, std::vector<ReadBlock> blocks)
{
    m_tags = std::move(tags);
    m_blocks = std::move(blocks);
    m_tagsByUnit.clear();
    setPlaces();
    for (size_t i = 0; i < m_tags.size(); ++i) {
        const Place& place = m_places[i];
        for (int unit = 0; unit < place.units; ++unit)
            m_tagsByUnit[Unit(place.station, place.area, place.number + unit)].push_back(int(i));
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

std::vector<int> PolledTags::tagsIn(const ReadBlock& block) const
{
    std::set<int> tags;
    for (int unit = 0; unit < block.count; ++unit) {
        for (const int tag : tagsAt(block.station, block.area, block.number + unit)) {
            if (contains(block, m_tags[size_t(tag)])) tags.insert(tag);
        }
    }
    return std::vector<int>(tags.begin(), tags.end());
}

ReadBlock PolledTags::withWholeTags(const ReadBlock& block) const
{
    ReadBlock whole = block;
    for (int unit = 0; unit < block.count; ++unit) {
        for (const int tag : tagsAt(block.station, block.area, block.number + unit)) {
            const std::optional<TagSpan> span = spanIn(block, m_tags[size_t(tag)]);
            if (!span) continue;
            const int end = std::max(whole.number + whole.count, span->end);
            whole.number = std::min(whole.number, span->start);
            whole.count = end - whole.number;
        }
    }
    return whole;
}

std::optional<ReadBlock> PolledTags::wordOfBit(const VARIABLE& written) const
{
    if (!isBitArea(written.regName)) return std::nullopt;
    const WordBit word = wordBitOf(written.regName, written.addr);
    if (tagsAt(written.station, word.area, word.number).empty()) return std::nullopt;
    return wordsOf(written);
}

ReadBlock PolledTags::wordsOf(const VARIABLE& written) const
{
    ReadBlock block;
    block.station = written.station;
    block.area = written.regName;
    block.number = written.addr;
    block.count = std::max(int(written.count), 1);
    if (isBitArea(block.area)) {
        const WordBit first = wordBitOf(written.regName, written.addr);
        const WordBit last = wordBitOf(written.regName, written.addr + block.count - 1);
        block.area = first.area;
        block.number = first.number;
        block.count = last.number - first.number + 1;
    }
    block = withWholeTags(block);
    block.tags = tagsIn(block);
    return block;
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
