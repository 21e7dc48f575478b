// Which readings become rows of the history, and with which time.
#include "historyRoom.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::vector<Tag> oneTag(double deadband, Tag::Type type = Tag::INT16)
{
    std::vector<Tag> tags = historyTags(1, type);
    tags[0].deadband = deadband;
    return tags;
}

/// A run, three seconds without the station, and a run.
void runStopAndRun(HistoryRoom& room)
{
    room.answer(0, 5);
    room.second();
    room.kill();
    room.clock.passMs(3000);
    room.startStation();
    room.answer(0, 6);
    room.second();
}

} // namespace

TEST(HistoryRows, HoldEachChangeWithTheTimeOfItsAnswer)
{
    HistoryRoom room(oneTag(0));
    room.clock.passMs(100);
    room.answer(0, 5);
    room.clock.passMs(100);
    room.answer(0, 6);
    room.clock.passMs(100);
    room.answer(0, 6);
    room.second();
    EXPECT_EQ("100 5 good, 200 6 good", room.rows());
}

TEST(HistoryRows, LeaveOutChangesUpToTheDeadbandFromTheRowWrittenLast)
{
    HistoryRoom room(oneTag(2));
    for (const double value : {10, 11, 12, 13, 12, 11, 10})
        room.answer(0, value);
    room.second();
    EXPECT_EQ("0 10 good, 0 13 good, 0 10 good", room.rows());
}

TEST(HistoryRows, HoldTheQualityThatChangedAndTheValueThatStayed)
{
    HistoryRoom room(oneTag(100));
    room.answer(0, 5);
    room.clock.passMs(50);
    room.bad(0, QLatin1String("no answer"));
    room.clock.passMs(50);
    room.answer(0, 6);
    room.second();
    EXPECT_EQ("0 5 good, 50 5 bad, 100 6 good", room.rows());
}

TEST(HistoryRows, SayWhenAValueWentStaleThoughNobodyToldIt)
{
    HistoryRoom room(oneTag(0));
    room.clock.passMs(300);
    room.answer(0, 5);
    room.seconds(6);
    EXPECT_EQ("300 5 good, 2300 5 stale", room.rows());
}

TEST(HistoryRows, ComeAtLeastAsOftenAsTheOverride)
{
    HistoryRoom room(oneTag(0));
    for (int i = 0; i < HistoryRoom::OVERRIDE_MS / 1000 * 2 + 10; ++i) {
        room.answer(0, 5);
        room.second();
    }
    EXPECT_EQ("0 5 good, 599000 5 good, 1199000 5 good", room.rows());
}

TEST(HistoryRows, TellOfATagThatWasNeverReadThatItHasNoValue)
{
    HistoryRoom room(oneTag(0));
    room.second();
    EXPECT_EQ("1000 none bad", room.rows());
}

TEST(HistoryRows, EndTheValueOfALinkThatIsNoLongerThere)
{
    HistoryRoom room(oneTag(0));
    room.answer(0, 5);
    room.second();
    room.clock.passMs(1000);
    room.intake->look({});
    room.writer->turn();
    EXPECT_EQ("0 5 good, 2000 5 bad", room.rows());
}

TEST(HistoryRows, HoldWhatAFloatCanBe)
{
    HistoryRoom room(oneTag(0.5, Tag::FLOAT32));
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double value : {1.5, infinity, infinity, -infinity, nan, nan, -0.25, 0.125, 0.75})
        room.answer(0, value);
    room.second();
    EXPECT_EQ("0 1.5 good, 0 inf good, 0 -inf good, 0 nan good, 0 -0.25 good, "
              "0 0.75 good",
              room.rows());
}

TEST(HistoryRows, HoldBits)
{
    HistoryRoom room(oneTag(0, Tag::BOOL));
    for (const double value : {0, 1, 1, 0})
        room.answer(0, value);
    room.second();
    EXPECT_EQ("0 0 good, 0 1 good, 0 0 good", room.rows());
}

TEST(HistoryRows, GoOnWhenATagGetsAnotherType)
{
    HistoryRoom room(oneTag(0));
    room.answer(0, 5);
    room.second();
    room.kill();
    room.tags[0].type = Tag::FLOAT32;
    room.clock.passMs(500);
    room.startStation();
    room.answer(0, 2.5);
    room.second();
    EXPECT_EQ("0 5 good, 1000 none bad, 1500 2.5 good", room.rows());
}

TEST(HistoryRows, TellTheEndOfEachRunButOfTheOneThatGoesOn)
{
    HistoryRoom room(oneTag(0));
    runStopAndRun(room);
    EXPECT_EQ("0 5 good, 1000 none bad, 4000 6 good", room.rows());
    room.clock.passMs(60000); // nobody looked: a run ends there, too
    room.second();
    EXPECT_EQ("0 5 good, 1000 none bad, 4000 6 good, 5000 none bad, 66000 6 stale", room.rows());
}

TEST(HistoryRows, TellTheEndOfARunOnlyToWhoAsksForItsTime)
{
    HistoryRoom room(oneTag(0));
    runStopAndRun(room);
    HistoryReader reader(room.fileName());
    const auto count = [&](qint64 from, qint64 until) {
        return reader
            .rows({QLatin1String("plc"), QLatin1String("tag0"), room.begin + from,
                   room.begin + until, 1},
                  0, 10)
            .size();
    };
    EXPECT_EQ(1u, count(500, 1001));
    EXPECT_EQ(0u, count(500, 1000));
    EXPECT_EQ(0u, count(1001, 4000));
}

TEST(HistoryRows, AndTheEndsOfRunsAreReadOneByOne)
{
    HistoryRoom room(oneTag(0));
    for (int i = 0; i < 3; ++i)
        runStopAndRun(room);
    HistoryReader reader(room.fileName());
    HistoryQuery query{QLatin1String("plc"), QLatin1String("tag0"), 0, room.clock.wall(), 1};
    const std::vector<HistoryRow> all = reader.rows(query, 0, 1000);
    EXPECT_EQ(9u, all.size());
    qint64 after = 0;
    for (const HistoryRow& expected : all) {
        const std::vector<HistoryRow> page = reader.rows(query, after, 1);
        ASSERT_EQ(1u, page.size());
        EXPECT_EQ(expected.time, page[0].time);
        EXPECT_EQ(expected.hasValue, page[0].hasValue);
        EXPECT_EQ(expected.sequence, page[0].sequence);
        query.from = page[0].time;
        after = page[0].sequence;
    }
    EXPECT_TRUE(reader.rows(query, after, 1).empty());
}

TEST(HistoryRows, AreReadPageByPage)
{
    HistoryRoom room(oneTag(0));
    for (int i = 0; i < 5000; ++i) {
        if (i % 3 == 0) room.clock.passMs(1);
        room.answer(0, i);
    }
    room.second();
    HistoryReader reader(room.fileName());
    HistoryQuery query{QLatin1String("plc"), QLatin1String("tag0"), 0, room.clock.wall(), 1};
    int next = 0;
    qint64 after = 0;
    std::vector<HistoryRow> page(7);
    while (page.size() == 7) {
        page = reader.rows(query, after, 7);
        for (const HistoryRow& row : page)
            EXPECT_EQ(next++, row.value);
        if (page.empty()) break;
        query.from = page.back().time;
        after = page.back().sequence;
    }
    EXPECT_EQ(5000, next);
}
