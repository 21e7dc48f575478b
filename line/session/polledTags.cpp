#include "session/polledTags.h"

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
    for (size_t i = 0; i < m_tags.size(); ++i) {
        const Tag& tag = m_tags[i];
        for (int unit = 0; unit < tag.units(); ++unit)
            m_tagsByUnit[Unit(tag.station, tag.area, tag.number + unit)].push_back(int(i));
    }
    for (size_t i = 0; i < m_blocks.size(); ++i) {
        const ReadBlock& block = m_blocks[i];
        m_blocksByStart[Unit(block.station, block.area, block.number)] = int(i);
    }
}

int PolledTags::blockOf(const VARIABLE& read) const
{
    const auto found = m_blocksByStart.find(Unit(read.station, read.regName, read.addr));
    return found == m_blocksByStart.end() ? int(NO_BLOCK) : found->second;
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
