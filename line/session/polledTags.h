#ifndef POLLED_TAGS_H
#define POLLED_TAGS_H

#include "plan/readPlan.h"
#include "quorvane_ka_kb_plc.h"

#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

/// The tags of a link and the blocks that read them: finds the tags of a unit (a word or
/// bit of the driver's cache), of a block and of a station.
class PolledTags
{
public:
    /// The units of the driver's cache that hold a tag's value. A bit that is read by a block of
    /// words is a bit of a word there.
    struct Place
    {
        enum { NO_BIT = -1 };

        int station;
        QString area;
        int number; ///< address number of the first unit
        int units;
        int bitOfWord; ///< 0 to 15; NO_BIT: the units are the value
    };

    void set(std::vector<Tag> tags, std::vector<ReadBlock> blocks);

    const Tag& tag(int index) const
    {
        return m_tags[size_t(index)];
    }
    const std::vector<Tag>& tags() const
    {
        return m_tags;
    }
    const Place& place(int tag) const
    {
        return m_places[size_t(tag)];
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

    /// The read of the words that a write holds, or of the words of its bits. It reads the tags
    /// there as a whole.
    ReadBlock wordsOf(const VARIABLE& written) const;

    /// The read that brings a written bit to the tags that show it through its word. Empty when no
    /// tag does.
    std::optional<ReadBlock> wordOfBit(const VARIABLE& written) const;

    std::set<int> stations() const;

    std::vector<int> tagsOfStation(int station) const;
    std::vector<int> allTags() const;

    /// The tags that show a unit.
    const std::vector<int>& tagsAt(int station, const QString& area, int number) const;

    static KEY_ADDRESS keyOf(const ReadBlock& block);

    /// The key of a one-shot read of the block. The count of bits is in groups of 16 there.
    static KEY_ADDRESS oneShotKeyOf(const ReadBlock& block);

private:
    using Unit = std::tuple<int, QString, int>;

    void setPlaces();

    std::vector<Tag> m_tags;
    std::vector<ReadBlock> m_blocks;
    std::vector<Place> m_places; ///< by tag
    std::map<Unit, std::vector<int>> m_tagsByUnit;
};

#endif
