#ifndef READ_PLAN_BENCH_H
#define READ_PLAN_BENCH_H

#include "plan/readPlan.h"

#include <gtest/gtest.h>

#include <algorithm>

// Tools for the tests of read plans.

enum { MOST_WORDS = 125 };

inline Tag wordTag(int number, Tag::Type type = Tag::UINT16, const char* area = "MW",
                   int station = 1)
{
    Tag tag;
    tag.station = station;
    tag.area = QString::fromLatin1(area);
    tag.number = number;
    tag.type = type;
    return tag;
}

inline Tag bitTag(const char* area, int number, int station = 1)
{
    return wordTag(number, Tag::BOOL, area, station);
}

/// The first word of a tag. Bit k of word w is bit 16 w + k; the markers begin at 3000.
inline int firstWordOf(const Tag& tag)
{
    const int base = tag.area.at(0) == QLatin1Char('M') ? 3000 : 0;
    return tag.isBit() ? base + (tag.number - base) / 16 : tag.number;
}

/// Expects that the tag lies as a whole in the block.
inline void expectHeld(const Tag& tag, const ReadBlock& block)
{
    const bool holdsBits = isBitArea(block.area);
    const int number = holdsBits ? tag.number : firstWordOf(tag);
    ASSERT_EQ(tag.station, block.station);
    ASSERT_EQ(tag.area.at(0), block.area.at(0));
    ASSERT_TRUE(tag.isBit() || !holdsBits);
    ASSERT_GE(number, block.number);
    ASSERT_LE(number + tag.units(), block.number + block.count);
}

/// A cost at which reading a gap of up to `gap` words costs no more than another request.
inline WireCost costWithGap(int gap)
{
    WireCost cost;
    cost.request = gap * 10;
    cost.word = 10;
    return cost;
}

inline std::vector<ReadBlock> shortestOf(const std::vector<Tag>& tags, int gap)
{
    return shortestReads(tags, costWithGap(gap), MOST_WORDS);
}

inline std::vector<ReadBlock> planOf(const std::vector<Tag>& tags, int gap)
{
    return planReads(tags, costWithGap(gap), MOST_WORDS);
}

/// Expects that each tag lies as a whole in exactly one block.
inline void expectAllRead(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks,
                          int mostWords)
{
    std::vector<int> readers(tags.size(), 0);
    for (const ReadBlock& block : blocks) {
        ASSERT_LE(block.count, isBitArea(block.area) ? 16 : mostWords);
        ASSERT_TRUE(std::is_sorted(block.tags.begin(), block.tags.end()));
        for (const int index : block.tags) {
            ++readers.at(static_cast<size_t>(index));
            expectHeld(tags.at(static_cast<size_t>(index)), block);
        }
    }
    ASSERT_EQ(std::vector<int>(tags.size(), 1), readers);
}

#endif
