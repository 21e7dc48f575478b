#include "plan/refusedBlock.h"

#include "plan/tagSpan.h"
#include "readPlanBench.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>
#include <set>

// What is read instead of a refused block. The peer is a set of illegal words: it refuses a read
// that reaches one of them.

namespace {

enum { WHOLE_GAPS = 1000 };

/// The one block of the tags, gaps included.
ReadBlock blockOf(const std::vector<Tag>& tags)
{
    const std::vector<ReadBlock> blocks = shortestOf(tags, WHOLE_GAPS);
    EXPECT_EQ(1u, blocks.size());
    return blocks.at(0);
}

using Words = std::pair<int, int>; ///< first number and count

std::vector<Words> partsOf(const std::vector<Tag>& tags)
{
    std::vector<Words> words;
    for (const ReadBlock& part : partsOfRefused(blockOf(tags), tags))
        words.emplace_back(part.number, part.count);
    return words;
}

/// Reads a block as a host does, in parts when the peer refuses it.
class SplittingReader
{
public:
    SplittingReader(const std::vector<Tag>& tags, std::set<int> illegal)
        : m_tags(tags), m_illegal(std::move(illegal))
    {
    }

    void read(const ReadBlock& block)
    {
        ++reads;
        const bool isRefused = isIllegal(block.number, block.number + block.count);
        const std::vector<ReadBlock> parts =
            isRefused ? partsOfRefused(block, m_tags) : std::vector<ReadBlock>();
        for (const ReadBlock& part : parts)
            read(part);
        if (!parts.empty()) return;
        for (const int tag : block.tags)
            ++(isRefused ? refused : good)[tag];
    }

    bool isIllegal(int start, int end) const
    {
        const auto found = m_illegal.lower_bound(start);
        return found != m_illegal.end() && *found < end;
    }

    int reads = 0;
    std::map<int, int> refused; ///< times, by tag
    std::map<int, int> good;

private:
    const std::vector<Tag>& m_tags;
    const std::set<int> m_illegal;
};

} // namespace

TEST(RefusedBlock, SpareWordsAreDroppedFirst)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3001)};
    ReadBlock block = blockOf(tags);
    block.count += 2;
    block.spare = 2;
    const std::vector<ReadBlock> parts = partsOfRefused(block, tags);
    ASSERT_EQ(1u, parts.size());
    EXPECT_EQ(2, parts[0].count);
    EXPECT_EQ(0, parts[0].spare);
    EXPECT_EQ((std::vector<int>{0, 1}), parts[0].tags);
}

TEST(RefusedBlock, TheGapNearestToTheMiddleIsDroppedBeforeTheTagsAreHalved)
{
    EXPECT_EQ((std::vector<Words>{{3000, 1}, {3005, 4}}),
              partsOf({wordTag(3000), wordTag(3005), wordTag(3006), wordTag(3007), wordTag(3008)}));
    EXPECT_EQ((std::vector<Words>{{3000, 11}, {3020, 11}}),
              partsOf({wordTag(3000), wordTag(3010), wordTag(3020), wordTag(3030)}));
}

TEST(RefusedBlock, TagsWithoutGapsAreHalved)
{
    EXPECT_EQ((std::vector<Words>{{3000, 2}, {3002, 2}}),
              partsOf({wordTag(3000), wordTag(3001), wordTag(3002), wordTag(3003)}));
}

TEST(RefusedBlock, TagOfTwoWordsIsNotSplit)
{
    EXPECT_TRUE(partsOf({wordTag(3000, Tag::FLOAT32)}).empty());
    EXPECT_EQ((std::vector<Words>{{3000, 2}, {3002, 1}}),
              partsOf({wordTag(3000, Tag::FLOAT32), wordTag(3002)}));
}

TEST(RefusedBlock, TagsThatOverlapAreCutFromEachOther)
{
    EXPECT_EQ((std::vector<Words>{{3000, 1}, {3000, 2}}),
              partsOf({wordTag(3000, Tag::UINT32), wordTag(3000)}));
    EXPECT_TRUE(partsOf({wordTag(3000, Tag::UINT32), wordTag(3000, Tag::FLOAT32)}).empty());
}

TEST(RefusedBlock, BitsOfOneGroupStayTogether)
{
    EXPECT_TRUE(partsOf({bitTag("MX", 3000), bitTag("MX", 3007), bitTag("MX", 3015)}).empty());
}

TEST(RefusedBlock, BitsInABlockOfWordsStandInTheirWord)
{
    const std::vector<Tag> tags = {bitTag("QX", 0), bitTag("QX", 15), bitTag("QX", 16),
                                   wordTag(1, Tag::UINT16, "QW")};
    ReadBlock block;
    block.station = 1;
    block.area = QLatin1String("QW");
    block.count = 2;
    block.tags = {0, 1, 2, 3};
    const std::vector<ReadBlock> parts = partsOfRefused(block, tags);
    ASSERT_EQ(2u, parts.size());
    EXPECT_EQ((std::vector<int>{0, 1}), parts[0].tags);
    EXPECT_EQ((std::vector<int>{2, 3}), parts[1].tags);
    EXPECT_TRUE(partsOfRefused(parts[0], tags).empty());
    EXPECT_TRUE(partsOfRefused(parts[1], tags).empty());
}

// Marker bit 3000 + 16 k is in word 3000 + k.
TEST(RefusedBlock, MarkerBitsAreCountedFromTheFirstMarker)
{
    ReadBlock block;
    block.station = 1;
    block.area = QLatin1String("MW");
    const std::optional<TagSpan> span = spanIn(block, bitTag("MX", 3000 + 16 * 5 + 3));
    ASSERT_TRUE(span);
    EXPECT_EQ(3005, span->start);
    EXPECT_EQ(3006, span->end);
    EXPECT_FALSE(spanIn(block, bitTag("IX", 3)));
}

// MODBUS Application Protocol V1.1b3, 7: the codes that speak of address and length.
TEST(RefusedBlock, OnlyRefusalsOfAddressOrLengthSplit)
{
    for (const int code : {0, 1, 4, 5, 6, 7, 8, 10, 11, 255})
        EXPECT_FALSE(isSplitByException(code)) << code;
    EXPECT_TRUE(isSplitByException(2));
    EXPECT_TRUE(isSplitByException(3));
}

namespace {

/// Random runs of tags with gaps of random lengths, in one block of up to 120 words.
std::vector<Tag> randomTags(std::mt19937& random)
{
    std::vector<Tag> tags;
    const unsigned gapShare = 1 + unsigned(random() % 20);
    for (int number = 3000; number < 3120;) {
        const bool isLong = random() % 4 == 0;
        tags.push_back(wordTag(number, isLong ? Tag::FLOAT32 : Tag::UINT16));
        const int step = tags.back().units();
        const bool overlaps = isLong && random() % 4 == 0;
        number += overlaps ? step - 1 : step;
        if (random() % gapShare == 0) number += int(random() % 15);
    }
    return tags;
}

/// The most reads that the split of a block of n places may take for each refused place.
double mostReads(size_t places)
{
    return 2 * std::log2(double(places)) + 6;
}

} // namespace

TEST(RefusedBlock, InTheEndOnlyTagsOfIllegalWordsAreRefused)
{
    std::mt19937 random(17);
    for (int round = 0; round < 500; ++round) {
        const std::vector<Tag> tags = randomTags(random);
        std::set<int> illegal;
        for (unsigned left = unsigned(random() % 8); left > 0; --left)
            illegal.insert(3000 + int(random() % 120));
        SplittingReader reader(tags, illegal);
        reader.read(blockOf(tags));
        for (size_t i = 0; i < tags.size(); ++i) {
            const bool isIllegal =
                reader.isIllegal(tags[i].number, tags[i].number + tags[i].units());
            ASSERT_EQ(isIllegal ? 0 : 1, reader.good[int(i)]) << round << ", tag " << i;
            ASSERT_EQ(isIllegal ? 1 : 0, reader.refused[int(i)]) << round << ", tag " << i;
        }
    }
}

TEST(RefusedBlock, FurtherReadsAreFewForEachRefusedPlace)
{
    std::mt19937 random(18);
    for (int round = 0; round < 40; ++round) {
        const std::vector<Tag> tags = randomTags(random);
        for (int illegal = 3000; illegal < 3120; ++illegal) {
            SplittingReader reader(tags, {illegal});
            reader.read(blockOf(tags));
            // A word of two overlapping tags is two refused places.
            const size_t refused = std::max<size_t>(reader.refused.size(), 1);
            ASSERT_LE(reader.reads - 1, double(refused) * mostReads(tags.size()))
                << round << ", illegal " << illegal;
        }
    }
}

// Runs of 1, 2, 4, 8, 16, 32 words with gaps between them: the cuts at the gaps divide unevenly.
TEST(RefusedBlock, FurtherReadsAreFewWhenTheRunsGrow)
{
    std::vector<Tag> tags;
    int number = 3000;
    for (int run = 1; run <= 32; run *= 2, ++number) {
        for (int i = 0; i < run; ++i)
            tags.push_back(wordTag(number++));
    }
    int most = 0;
    for (int illegal = 3000; illegal < number; ++illegal) {
        SplittingReader reader(tags, {illegal});
        reader.read(blockOf(tags));
        most = std::max(most, reader.reads - 1);
    }
    EXPECT_LE(most, mostReads(tags.size()));
}
