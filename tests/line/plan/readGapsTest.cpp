#include "plan/readGaps.h"

#include "readPlanBench.h"

#include <gtest/gtest.h>

namespace {

void expectGaps(int words, int longest, const std::vector<Tag>& tags, int gap)
{
    const ReadGaps gaps = readGaps(planOf(tags, gap), tags);
    EXPECT_EQ(words, gaps.words);
    EXPECT_EQ(longest, gaps.longest);
}

} // namespace

TEST(ReadGaps, OfNoTagsAreNone)
{
    expectGaps(0, 0, {}, 5);
}

TEST(ReadGaps, AreTheWordsBetweenTheTagsOfABlock)
{
    const std::vector<Tag> tags = {wordTag(3000, Tag::FLOAT32), wordTag(3005), wordTag(3007)};
    expectGaps(4, 3, tags, 10);
    expectGaps(1, 1, tags, 2);
    expectGaps(0, 0, tags, 0);
}

TEST(ReadGaps, AreNoWordsWithATagOfABit)
{
    expectGaps(2, 1, {wordTag(3000), bitTag("MX", 3000 + 16 * 2 + 5), wordTag(3004)}, 10);
}

TEST(ReadGaps, OfOverlappingTagsAreNone)
{
    expectGaps(0, 0, {wordTag(3000, Tag::INT32), wordTag(3001, Tag::INT32), wordTag(3001)}, 10);
}

TEST(ReadGaps, AreNotTheSpareWordsBehindABlock)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3500)};
    const std::vector<ReadBlock> blocks = planOf(tags, 10);
    ASSERT_EQ(1, blocks[1].spare);
    EXPECT_EQ(0, readGaps(blocks, tags).words);
}
