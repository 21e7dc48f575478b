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

VARIABLE variableAt(int station, const QString& area, int number)
{
    VARIABLE variable;
    variable.station = station;
    variable.regName = area;
    variable.addr = number;
    return variable;
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

// MX 3016 to 3031 are the bits of MW 3001.
TEST_F(PolledTagsTest, BitReadByAGroupIsAUnitOfItsOwn)
{
    EXPECT_EQ(MX, polled.place(2).area);
    EXPECT_EQ(3016, polled.place(2).number);
    EXPECT_EQ(int(PolledTags::Place::NO_BIT), polled.place(2).bitOfWord);
    EXPECT_EQ(std::vector<int>{2}, polled.tagsAt(2, MX, 3016));
    EXPECT_FALSE(polled.wordOfBit(variableAt(2, MX, 3016)));
}

TEST_F(PolledTagsTest, BitReadByWordsIsABitOfItsWord)
{
    polled.set({tagAt(1, MX, 3021, Tag::BOOL), tagAt(1, MW, 3001, Tag::UINT16),
                tagAt(1, MX, 3031, Tag::BOOL)},
               {block(1, MW, 3000, 2, {0, 1, 2})});
    EXPECT_EQ(MW, polled.place(0).area);
    EXPECT_EQ(3001, polled.place(0).number);
    EXPECT_EQ(1, polled.place(0).units);
    EXPECT_EQ(5, polled.place(0).bitOfWord);
    EXPECT_EQ(15, polled.place(2).bitOfWord);
    EXPECT_EQ((std::vector<int>{0, 1, 2}), polled.tagsAt(1, MW, 3001));
    EXPECT_TRUE(polled.tagsAt(1, MX, 3021).empty());
}

TEST_F(PolledTagsTest, WrittenBitIsReadBackAsItsWord)
{
    polled.set({tagAt(1, MX, 3021, Tag::BOOL)}, {block(1, MW, 3000, 2, {0})});
    const std::optional<ReadBlock> word = polled.wordOfBit(variableAt(1, MX, 3030));
    ASSERT_TRUE(word);
    EXPECT_EQ(MW, word->area);
    EXPECT_EQ(3001, word->number);
    EXPECT_EQ(1, word->count);
    EXPECT_EQ(1, word->station);
    EXPECT_FALSE(polled.wordOfBit(variableAt(1, MX, 3015)));
    EXPECT_FALSE(polled.wordOfBit(variableAt(2, MX, 3030)));
    EXPECT_FALSE(polled.wordOfBit(variableAt(1, MW, 3001)));
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
