#ifndef POLLED_TAGS_H
#define POLLED_TAGS_H

#include "plan/readPlan.h"
#include "quorvane_ka_kb_plc.h"

#include <map>
#include <set>
#include <tuple>
#include <vector>

/// The tags of a link and the blocks that read them: finds the tags of a unit (a word or
/// bit), of a block and of a station.
class PolledTags
{
public:
    void set(std::vector<Tag> tags, std::vector<ReadBlock> blocks);

    const Tag& tag(int index) const
    {
        return m_tags[size_t(index)];
    }
    const std::vector<Tag>& tags() const
    {
        return m_tags;
    }
    const ReadBlock& block(int index) const
    {
        return m_blocks[size_t(index)];
    }

    /// The keys of the blocks whose station `isPolled` accepts.
    template <typename Predicate> QList<KEY_ADDRESS> keys(Predicate isPolled) const
    {
        QList<KEY_ADDRESS> keys;
        for (const ReadBlock& block : m_blocks) {
            if (isPolled(block.station)) keys.append(keyOf(block));
        }
        return keys;
    }

    /// The tags whose values a block reads as a whole, ascending.
    std::vector<int> tagsIn(const ReadBlock& block) const;

    /// The block with all words of the tags that it reads in part.
    ReadBlock withWholeTags(const ReadBlock& block) const;

    std::set<int> stations() const;

    std::vector<int> tagsOfStation(int station) const;
    std::vector<int> allTags() const;

    /// The tags that show a unit.
    const std::vector<int>& tagsAt(int station, const QString& area, int number) const;

    static KEY_ADDRESS keyOf(const ReadBlock& block);

private:
    using Unit = std::tuple<int, QString, int>;

    std::vector<Tag> m_tags;
    std::vector<ReadBlock> m_blocks;
    std::map<Unit, std::vector<int>> m_tagsByUnit;
};

#endif
