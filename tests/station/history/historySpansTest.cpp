// What packed rows have in common, when some of them were dropped.
#include "historyRoom.h"

#include "history/historySchema.h"
#include "history/packedSpans.h"
#include "history/rowPacking.h"

#include <gtest/gtest.h>

namespace {

enum { ONLY_SERIES = 1 };

/// A tag with one row in each pack: the first pack has an extreme value, and is dropped.
class HistorySpans : public testing::Test
{
protected:
    HistorySpans()
    {
        for (const double value : {1000, 3, 1, 2})
            addPack(value);
    }

    void addPack(double value)
    {
        room.answer(0, value);
        room.second();
        packFreshRows(*openHistoryFile(room.fileName()));
    }

    void dropOldestPack()
    {
        const auto file = openHistoryFile(room.fileName());
        PackedSpans(*file).dropPack(ONLY_SERIES, 0);
        file->execute("DELETE FROM packs WHERE number = 0");
    }

    std::vector<PackedSpan> top()
    {
        const auto file = openHistoryFile(room.fileName());
        return PackedSpans(*file).top(ONLY_SERIES);
    }

    /// The spans of level 1.
    std::vector<PackedSpan> lowest()
    {
        const auto file = openHistoryFile(room.fileName());
        PackedSpans spans(*file);
        std::vector<PackedSpan> found = spans.top(ONLY_SERIES);
        for (int level = TOP_LEVEL; level > 1; --level)
            found = spans.parts(ONLY_SERIES, level, found.at(0));
        return found;
    }

    /// "least largest last" of one bucket over everything.
    std::string bucketOfAll()
    {
        const HistoryBucket all = room.buckets(0, 100000, 1).at(0);
        return QString(QLatin1String("%1 %2 %3"))
            .arg(all.minimum)
            .arg(all.maximum)
            .arg(all.last)
            .toStdString();
    }

    HistoryRoom room{historyTags(1)};
};

} // namespace

TEST_F(HistorySpans, AreWholeWhileNothingIsDropped)
{
    EXPECT_TRUE(top().at(0).isWhole);
    EXPECT_TRUE(lowest().at(0).isWhole);
    EXPECT_EQ(4, top().at(0).summary.rows);
    EXPECT_EQ("1 1000 2", bucketOfAll());
}

TEST_F(HistorySpans, ThatLostAPackTellOnlyOfTheRowsThatAreLeft)
{
    dropOldestPack();
    EXPECT_FALSE(top().at(0).isWhole);
    EXPECT_FALSE(lowest().at(0).isWhole);
    EXPECT_EQ("1 3 2", bucketOfAll());
}

TEST_F(HistorySpans, ThatLostAPackAreNotMadeWholeByTheNext)
{
    dropOldestPack();
    addPack(-5);
    EXPECT_FALSE(top().at(0).isWhole);
    EXPECT_FALSE(lowest().at(0).isWhole);
    EXPECT_EQ("-5 3 -5", bucketOfAll());
}
