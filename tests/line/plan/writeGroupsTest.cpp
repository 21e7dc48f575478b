#include "plan/writeGroups.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

Tag tagAt(const char* area, int number, Tag::Type type = Tag::UINT16, int station = 1)
{
    Tag tag;
    tag.station = station;
    tag.area = QLatin1String(area);
    tag.number = number;
    tag.type = type;
    return tag;
}

std::vector<Tag> words(int first, int count)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(tagAt("MW", first + i));
    return tags;
}

struct Expected
{
    std::vector<size_t> tags;
    bool isOneFrame;
};

void expectGroups(const std::vector<Expected>& expected, const std::vector<Tag>& tags)
{
    const std::vector<WriteGroup> groups = writeGroups(tags);
    ASSERT_EQ(expected.size(), groups.size());
    for (size_t i = 0; i < groups.size(); ++i) {
        EXPECT_EQ(expected[i].tags, groups[i].tags) << i;
        EXPECT_EQ(expected[i].isOneFrame, groups[i].isOneFrame) << i;
    }
}

enum : bool { ALONE = false, ONE_FRAME = true };

} // namespace

TEST(WriteGroups, OfNoTagsAreEmpty)
{
    expectGroups({}, {});
}

TEST(WriteGroups, SingleWordAndSingleBitAreGroupsOfOne)
{
    expectGroups({{{0}, ALONE}}, {tagAt("MW", 3000)});
    expectGroups({{{0}, ALONE}}, {tagAt("MX", 3000, Tag::BOOL)});
}

TEST(WriteGroups, TwoWordTagIsOneFrame)
{
    for (const Tag::Type type : {Tag::INT32, Tag::UINT32, Tag::FLOAT32})
        expectGroups({{{0}, ONE_FRAME}}, {tagAt("MW", 3000, type)});
}

TEST(WriteGroups, AdjacentWordsAreOneFrame)
{
    expectGroups({{{0, 1, 2}, ONE_FRAME}},
                 {tagAt("QW", 5), tagAt("QW", 6, Tag::FLOAT32), tagAt("QW", 8)});
}

TEST(WriteGroups, TagsOfAGroupAreSortedByAddress)
{
    expectGroups({{{2, 0, 1}, ONE_FRAME}},
                 {tagAt("MW", 3001), tagAt("MW", 3002), tagAt("MW", 3000)});
}

TEST(WriteGroups, GapStartsAnotherGroup)
{
    expectGroups({{{0}, ALONE}, {{1, 2}, ONE_FRAME}},
                 {tagAt("MW", 3000), tagAt("MW", 3002), tagAt("MW", 3003)});
    expectGroups({{{0}, ONE_FRAME}, {{1}, ALONE}},
                 {tagAt("MW", 3000, Tag::UINT32), tagAt("MW", 3003)});
}

TEST(WriteGroups, StationsAndAreasHaveSeparateGroups)
{
    expectGroups({{{0}, ALONE}, {{1}, ALONE}},
                 {tagAt("MW", 3000, Tag::UINT16, 1), tagAt("MW", 3001, Tag::UINT16, 2)});
    expectGroups({{{1}, ALONE}, {{0}, ALONE}}, {tagAt("QW", 101), tagAt("MW", 100)});
}

TEST(WriteGroups, AdjacentBitsAreGroupsOfOne)
{
    expectGroups({{{0}, ALONE}, {{1}, ALONE}},
                 {tagAt("MX", 3000, Tag::BOOL), tagAt("MX", 3001, Tag::BOOL)});
    expectGroups({{{0, 1}, ONE_FRAME}, {{2}, ALONE}},
                 {tagAt("MW", 3000), tagAt("MW", 3001), tagAt("MX", 3032, Tag::BOOL)});
}

TEST(WriteGroups, HaveAtMostTheWordsOfAFrame)
{
    const std::vector<WriteGroup> full = writeGroups(words(3000, 123));
    ASSERT_EQ(1u, full.size());
    EXPECT_EQ(123u, full[0].tags.size());
    const std::vector<WriteGroup> more = writeGroups(words(3000, 124));
    ASSERT_EQ(2u, more.size());
    EXPECT_EQ(123u, more[0].tags.size());
    EXPECT_EQ(std::vector<size_t>{123}, more[1].tags);
    EXPECT_FALSE(more[1].isOneFrame);
}

TEST(WriteGroups, TwoWordTagAtTheLimitIsNotSplit)
{
    std::vector<Tag> tags = words(3000, 122);
    tags.push_back(tagAt("MW", 3122, Tag::INT32));
    const std::vector<WriteGroup> groups = writeGroups(tags);
    ASSERT_EQ(2u, groups.size());
    EXPECT_EQ(122u, groups[0].tags.size());
    EXPECT_EQ(std::vector<size_t>{122}, groups[1].tags);
    EXPECT_TRUE(groups[1].isOneFrame);
}

TEST(WriteGroups, ListIsNotSplit)
{
    std::vector<Tag> tags = words(3000, 2 + 123);
    std::vector<size_t> lists(tags.size(), 2); // a full frame behind two single words
    lists[0] = 0;
    lists[1] = 1;
    const std::vector<WriteGroup> groups = writeGroups(tags, lists);
    ASSERT_EQ(2u, groups.size());
    EXPECT_EQ((std::vector<size_t>{0, 1}), groups[0].tags);
    EXPECT_EQ(123u, groups[1].tags.size());
    EXPECT_EQ(2u, writeGroups(tags).size());
    EXPECT_EQ(123u, writeGroups(tags)[0].tags.size());
}

TEST(WriteGroups, ListsThatFitTogetherAreOneFrame)
{
    std::vector<size_t> lists(6, 0);
    std::fill(lists.begin() + 2, lists.end(), 1);
    EXPECT_EQ(1u, writeGroups(words(3000, 6), lists).size());
}

TEST(WriteGroups, HoldEachTagOnce)
{
    for (int place = 0; place < 260; ++place) {
        std::vector<Tag> tags = words(3000, place);
        tags.push_back(tagAt("MW", 3000 + place, Tag::UINT32));
        const std::vector<Tag> behind = words(3000 + place + 2, 130);
        tags.insert(tags.end(), behind.begin(), behind.end());
        std::vector<int> groupsOf(tags.size(), 0);
        for (const WriteGroup& group : writeGroups(tags)) {
            int units = 0;
            for (const size_t tag : group.tags) {
                ++groupsOf.at(tag);
                units += tags[tag].units();
            }
            ASSERT_LE(units, 123) << place;
            ASSERT_EQ(units > 1, group.isOneFrame) << place;
        }
        ASSERT_EQ(std::vector<int>(tags.size(), 1), groupsOf) << place;
    }
}
