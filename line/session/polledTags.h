#ifndef POLLED_TAGS_H
#define POLLED_TAGS_H

#include "plan/readPlan.h"
#include "quorvane_ka_kb_plc.h"

#include <map>
#include <set>
#include <tuple>
#include <vector>

/// The tags that a session polls: which block brings which, and which units belong to which.
class PolledTags
{
public:
    void set(std::vector<Tag> tags, std::vector<ReadBlock> blocks);

    const Tag& tag(int index) const
    {
        return m_tags[size_t(index)];
    }
    const ReadBlock& block(int index) const
    {
        return m_blocks[size_t(index)];
    }

    /// Takes from a block what no tag of it needs.
    /// @return false when there was nothing
    bool dropSpare(int index);

    /// The keys of the blocks of those stations that `isPolled` accepts.
    template <typename Predicate> QList<KEY_ADDRESS> keys(Predicate isPolled) const
    {
        QList<KEY_ADDRESS> keys;
        for (const ReadBlock& block : m_blocks) {
            if (isPolled(block.station)) keys.append(keyOf(block));
        }
        return keys;
    }

    /// @return index of the block that a frame reads, -1: none
    int blockOf(const VARIABLE& read) const;

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
    std::map<Unit, int> m_blocksByStart;
};

#endif
