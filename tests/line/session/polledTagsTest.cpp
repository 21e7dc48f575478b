#include "session/polledTags.h"

#include <gtest/gtest.h>

namespace {

const QString MW = QLatin1String("MW");
const QString MX = QLatin1String("MX");

Tag tagAt(int station, const QString& area, int number, Tag::Type type)
{
    Tag tag;
    tag.station = station;
    tag.area = area;
    tag.number = number;
    tag.type = type;
    return tag;
}

ReadBlock block(int station, const QString& area, int number, int count, std::vector<int> tags)
{
    ReadBlock made;
    made.station = station;
    made.area = area;
    made.number = number;
    made.count = count;
    made.tags = std::move(tags);
    return made;
}

} // namespace

class PolledTagsTest : public testing::Test
{
protected:
    PolledTagsTest()
    {
        polled.set({tagAt(1, MW, 3010, Tag::UINT16), tagAt(1, MW, 3011, Tag::FLOAT32),
                    tagAt(2, MX, 3016, Tag::BOOL), tagAt(1, MW, 3010, Tag::INT16)},
                   {block(1, MW, 3010, 3, {0, 1, 3}), block(2, MX, 3016, 16, {2})});
    }

    PolledTags polled;
};

TEST_F(PolledTagsTest, TagsThatABlockReadsAsAWholeAreFound)
{
    EXPECT_EQ((std::vector<int>{0, 1, 3}), polled.tagsIn(block(1, MW, 3000, 100, {})));
    EXPECT_EQ((std::vector<int>{0, 3}), polled.tagsIn(block(1, MW, 3010, 2, {})));
    EXPECT_EQ(std::vector<int>{1}, polled.tagsIn(block(1, MW, 3011, 2, {})));
    EXPECT_TRUE(polled.tagsIn(block(2, MW, 3000, 100, {})).empty());
}

TEST_F(PolledTagsTest, BlockIsWidenedToTheTagsThatItReadsInPart)
{
    const ReadBlock wide = polled.withWholeTags(block(1, MW, 3012, 3, {}));
    EXPECT_EQ(3011, wide.number);
    EXPECT_EQ(4, wide.count);
    const ReadBlock same = polled.withWholeTags(block(1, MW, 3010, 1, {}));
    EXPECT_EQ(3010, same.number);
    EXPECT_EQ(1, same.count);
}

TEST_F(PolledTagsTest, AllTagsOfAUnitAreFound)
{
    EXPECT_EQ((std::vector<int>{0, 3}), polled.tagsAt(1, MW, 3010));
}

TEST_F(PolledTagsTest, TwoWordTagIsFoundByEitherWord)
{
    EXPECT_EQ(std::vector<int>{1}, polled.tagsAt(1, MW, 3011));
    EXPECT_EQ(std::vector<int>{1}, polled.tagsAt(1, MW, 3012));
}

TEST_F(PolledTagsTest, UnitInAGapHasNoTags)
{
    EXPECT_TRUE(polled.tagsAt(1, MW, 3013).empty());
    EXPECT_TRUE(polled.tagsAt(2, MX, 3017).empty());
}

TEST_F(PolledTagsTest, TagsOfAStationAreFound)
{
    EXPECT_EQ((std::vector<int>{0, 1, 3}), polled.tagsOfStation(1));
    EXPECT_EQ(std::vector<int>{2}, polled.tagsOfStation(2));
    EXPECT_TRUE(polled.tagsOfStation(3).empty());
}

TEST_F(PolledTagsTest, AllTagsAreListed)
{
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), polled.allTags());
}

TEST_F(PolledTagsTest, StationsOfBlocksAreListedOnce)
{
    polled.set({},
               {block(3, MW, 3010, 3, {}), block(1, MX, 3016, 16, {}), block(3, MW, 4000, 1, {})});
    EXPECT_EQ((std::set<int>{1, 3}), polled.stations());
}

TEST_F(PolledTagsTest, OnlyAcceptedStationsHaveKeys)
{
    const QList<KEY_ADDRESS> keys = polled.keys([](int station) { return station == 2; });
    ASSERT_EQ(1, int(keys.size()));
    EXPECT_EQ(2, keys.at(0).station);
    EXPECT_EQ(MX, keys.at(0).regName);
    EXPECT_EQ(3016, keys.at(0).addr);
    EXPECT_EQ(16, keys.at(0).count);
}

TEST_F(PolledTagsTest, OnlyKeysOfBitAreasHaveTheBitUnitMode)
{
    EXPECT_EQ(-1, PolledTags::keyOf(polled.block(1)).unitMode);
    EXPECT_NE(-1, PolledTags::keyOf(polled.block(0)).unitMode);
}

TEST_F(PolledTagsTest, NewSetReplacesTheOldSet)
{
    polled.set({tagAt(5, MW, 3000, Tag::UINT16)}, {block(5, MW, 3000, 1, {0})});
    EXPECT_TRUE(polled.tagsAt(1, MW, 3010).empty());
    EXPECT_EQ(std::vector<int>{0}, polled.tagsAt(5, MW, 3000));
}
