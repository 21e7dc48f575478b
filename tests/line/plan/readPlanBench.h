#ifndef READ_PLAN_BENCH_H
#define READ_PLAN_BENCH_H

#include "plan/readPlan.h"

#include <gtest/gtest.h>

#include <algorithm>

// What the tests of read plans share.

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

/// Reading a gap of up to `gap` words is cheaper than another request, or as cheap.
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

/// Every tag must lie in exactly one block, whole.
inline void expectAllRead(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks,
                          int mostWords)
{
    std::vector<int> readers(tags.size(), 0);
    for (const ReadBlock& block : blocks) {
        ASSERT_LE(block.count, mostWords);
        ASSERT_TRUE(std::is_sorted(block.tags.begin(), block.tags.end()));
        for (const int index : block.tags) {
            const Tag& tag = tags.at(static_cast<size_t>(index));
            ++readers.at(static_cast<size_t>(index));
            ASSERT_EQ(tag.station, block.station);
            ASSERT_EQ(tag.area, block.area);
            ASSERT_GE(tag.number, block.number);
            ASSERT_LE(tag.number + tag.units(), block.number + block.count);
        }
    }
    ASSERT_EQ(std::vector<int>(tags.size(), 1), readers);
}

#endif
