// The file and its log stay below the cap; the oldest rows go first and are counted.
#include "historyRoom.h"

#include <QFileInfo>

#include <gtest/gtest.h>

#include <random>

namespace {

enum { TAGS = 200, ANSWERS_A_SECOND = 8000 };

qint64 bytesOnDisk(const HistoryRoom& room)
{
    return QFileInfo(room.fileName()).size() +
           QFileInfo(room.fileName() + QLatin1String("-wal")).size();
}

/// A second in which many values change. @return the bytes on the disk behind it
qint64 fullSecond(HistoryRoom& room, std::mt19937& random)
{
    for (int i = 0; i < ANSWERS_A_SECOND; ++i)
        room.answer(i % TAGS, double(float(random()) / 3));
    room.second();
    return bytesOnDisk(room);
}

qint64 firstTime(const HistoryRoom& room)
{
    HistoryReader reader(room.fileName());
    const std::vector<HistoryRow> rows =
        reader.rows({QLatin1String("plc"), QLatin1String("tag0"), 0, room.begin * 2, 1}, 0, 1);
    return rows.empty() ? 0 : rows[0].time - room.begin;
}

} // namespace

TEST(HistoryCap, BoundsTheFileAndItsLog)
{
    HistoryRoom room(historyTags(TAGS, Tag::FLOAT32));
    std::mt19937 random(1);
    qint64 written = 0;
    for (int i = 0; i < 70; ++i) {
        ASSERT_LE(fullSecond(room, random), HistoryRoom::LEAST_CAP) << "second " << i;
        written += ANSWERS_A_SECOND;
        const HistoryStanding standing = room.writer->standing();
        ASSERT_EQ(written, standing.rows + standing.dropped) << "second " << i;
    }
    EXPECT_TRUE(room.writer->standing().trouble.isEmpty());
    EXPECT_GT(room.writer->standing().dropped, 50000);
    EXPECT_GT(room.writer->standing().rows, 100000);
    const qint64 first = firstTime(room);
    EXPECT_GT(first, 10000);
    EXPECT_EQ("-", room.lasts(0, first, 1));
    EXPECT_NE("-", room.lasts(first, first + 1000, 1));
    const qint64 rows = room.writer->standing().rows;
    room.kill();
    room.startStation();
    room.second();
    EXPECT_EQ(rows + TAGS, room.writer->standing().rows); // each tag: not read yet
}

TEST(HistoryCap, MakesAFileSmallerThatWasAllowedMore)
{
    HistoryRoom room(historyTags(TAGS, Tag::FLOAT32), 12 * 1024 * 1024);
    std::mt19937 random(1);
    qint64 bytes = 0;
    while (bytes < 6 * 1024 * 1024)
        bytes = fullSecond(room, random);
    room.kill();
    room.cap = HistoryCap(HistoryRoom::LEAST_CAP);
    room.startStation();
    room.seconds(3);
    EXPECT_LE(bytesOnDisk(room), HistoryRoom::LEAST_CAP);
    EXPECT_TRUE(room.writer->standing().trouble.isEmpty());
    EXPECT_GT(room.writer->standing().rows, 100000);
}
