#include "session/polledTags.h"

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
    for (size_t i = 0; i < m_tags.size(); ++i) {
        const Tag& tag = m_tags[i];
        for (int unit = 0; unit < tag.units(); ++unit)
            m_tagsByUnit[Unit(tag.station, tag.area, tag.number + unit)].push_back(int(i));
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
