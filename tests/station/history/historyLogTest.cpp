// The history as a log: where it stands, and its rows in the order of coming.
#include "historyRoom.h"

#include "history/historySchema.h"
#include "history/rowPack.h"
#include "history/rowPacking.h"

#include <QFile>

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

/// Such as "3 tag0 5, 4 tag1 7".
std::string textOf(const std::vector<LoggedRow>& rows)
{
    QStringList words;
    for (const LoggedRow& row : rows)
        words << QString::number(row.sequence) + QLatin1Char(' ') + row.sample.tag +
                     QLatin1Char(' ') + QString::number(row.sample.value);
    return words.join(QLatin1String(", ")).toStdString();
}

/// A second in which tags get values, one behind the other, and a commit.
void commit(HistoryRoom& room, const std::vector<std::pair<int, double>>& answers)
{
    for (const auto& [tag, value] : answers)
        room.answer(tag, value);
    room.clock.passMs(1000);
    room.writer->turn();
}

void pack(const HistoryRoom& room)
{
    packFreshRows(*openHistoryFile(room.fileName()));
}

/// The sequences in the tables of fresh and packed rows.
std::set<qint64> leftRows(const HistoryRoom& room)
{
    const auto file = openHistoryFile(room.fileName());
    std::set<qint64> left;
    SqliteStatement fresh(*file, "SELECT sequence FROM fresh");
    while (fresh.next())
        left.insert(fresh.integer(0));
    SqliteStatement packs(*file, "SELECT data FROM packs");
    while (packs.next()) {
        const std::vector<HistoryRow> rows = unpackedRows(packs.blob(0)).value();
        for (const HistoryRow& row : rows)
            left.insert(row.sequence);
    }
    return left;
}

/// Notes rows by their numbers.
class NumberedRows : public RowListener
{
public:
    void rowNoted(const Sample& reading) override
    {
        if (reading.number != 0) rows.push_back(reading);
    }

    std::vector<Sample> rows; ///< number 1 comes first
};

/// Whether each row that was put into the present file lies where the position says.
void checkPosition(HistoryRoom& room, const NumberedRows& numbered)
{
    const LogPosition position = room.writer->position();
    ASSERT_EQ(numbered.rows.size(), position.number);
    for (quint64 number = position.firstNumber + 1; number <= position.number; ++number) {
        const qint64 sequence = position.sequence - qint64(position.number - number);
        const std::vector<LoggedRow> rows = room.reader->rowsBehind(sequence - 1, sequence, 2);
        ASSERT_EQ(1u, rows.size()) << number;
        ASSERT_EQ(sequence, rows[0].sequence);
        const Sample& noted = numbered.rows[size_t(number) - 1];
        ASSERT_EQ(noted.tag, rows[0].sample.tag) << number;
        ASSERT_EQ(noted.value, rows[0].sample.value) << number;
        ASSERT_EQ(noted.time, rows[0].sample.time) << number;
    }
}

} // namespace

TEST(HistoryLog, TellsRowsOfAllTagsInTheOrderOfComing)
{
    HistoryRoom room(historyTags(2));
    EXPECT_EQ(0, room.writer->position().file);
    EXPECT_TRUE(room.reader->rowsBehind(0, 100, 10).empty());
    commit(room, {{0, 5}, {1, 7}, {0, 6}});
    EXPECT_EQ("1 tag0 5, 2 tag1 7, 3 tag0 6", textOf(room.reader->rowsBehind(0, 100, 10)));
    pack(room);
    commit(room, {{1, 8}, {0, 9}});
    EXPECT_EQ("1 tag0 5, 2 tag1 7, 3 tag0 6, 4 tag1 8, 5 tag0 9",
              textOf(room.reader->rowsBehind(0, 100, 10)));
    EXPECT_EQ("2 tag1 7, 3 tag0 6, 4 tag1 8", textOf(room.reader->rowsBehind(1, 100, 3)));
    EXPECT_EQ("3 tag0 6, 4 tag1 8", textOf(room.reader->rowsBehind(2, 4, 10)));
    EXPECT_EQ("", textOf(room.reader->rowsBehind(5, 100, 10)));
    EXPECT_EQ("", textOf(room.reader->rowsBehind(4, 4, 10)));
}

TEST(HistoryLog, TellsLinkTimeAndQualityOfARow)
{
    HistoryRoom room(historyTags(1));
    commit(room, {});
    room.clock.passMs(300);
    room.answer(0, 5);
    const qint64 time = room.clock.wall();
    room.bad(0, QLatin1String("refused"));
    room.second();
    pack(room);
    const std::vector<LoggedRow> rows = room.reader->rowsBehind(0, 100, 10);
    ASSERT_EQ(2u, rows.size());
    EXPECT_EQ(QLatin1String("plc"), rows[0].sample.link);
    EXPECT_EQ(time, rows[0].sample.time);
    EXPECT_EQ(GOOD, rows[0].sample.quality);
    EXPECT_TRUE(rows[0].sample.hasValue);
    EXPECT_EQ(BAD, rows[1].sample.quality);
}

TEST(HistoryLog, StandsWhereTheLastCommitPutIt)
{
    HistoryRoom room(historyTags(3));
    NumberedRows numbered;
    room.intake->setRowListener(&numbered);
    commit(room, {{0, 1}, {1, 2}});
    const LogPosition first = room.writer->position();
    EXPECT_NE(0, first.file);
    EXPECT_EQ(2, first.sequence);
    EXPECT_EQ(2u, first.number);
    EXPECT_EQ(0u, first.firstNumber);
    EXPECT_EQ(room.clock.wall(), first.time);
    room.answer(2, 3);
    EXPECT_EQ(2u, room.writer->position().number);
    commit(room, {{0, 4}});
    checkPosition(room, numbered);
}

TEST(HistoryLog, StandsBehindTheRowsOfTheRunBefore)
{
    HistoryRoom room(historyTags(2));
    commit(room, {{0, 1}, {1, 2}});
    const qint64 file = room.writer->position().file;
    room.kill();
    room.startStation();
    NumberedRows numbered;
    room.intake->setRowListener(&numbered);
    commit(room, {{0, 3}});
    EXPECT_EQ(file, room.writer->position().file);
    EXPECT_EQ(3, room.writer->position().sequence);
    EXPECT_EQ(1u, room.writer->position().number);
    checkPosition(room, numbered);
}

TEST(HistoryLog, HasAnotherIdentityWhenTheFileWasDeleted)
{
    HistoryRoom room(historyTags(2));
    NumberedRows numbered;
    room.intake->setRowListener(&numbered);
    commit(room, {{0, 1}, {1, 2}, {0, 3}});
    const qint64 file = room.writer->position().file;
    EXPECT_EQ(3u, room.reader->rowsBehind(0, 100, 10).size());
    QFile::remove(room.fileName());
    commit(room, {{1, 4}});
    EXPECT_NE(file, room.writer->position().file);
    EXPECT_EQ(3u, room.writer->position().firstNumber);
    EXPECT_EQ(1, room.writer->position().sequence);
    checkPosition(room, numbered);
    commit(room, {{0, 5}, {1, 6}});
    checkPosition(room, numbered);
}

TEST(HistoryLog, SaysThatAnOlderCopyOfTheFileLacksTheRowsOfTheRun)
{
    HistoryRoom room(historyTags(2));
    NumberedRows numbered;
    const QString copy = room.folder.filePath(QLatin1String("copy"));
    commit(room, {{0, 1}});
    room.kill();
    ASSERT_TRUE(QFile::copy(room.fileName(), copy));
    room.startStation();
    room.intake->setRowListener(&numbered);
    commit(room, {{0, 2}, {1, 3}});
    const LogPosition before = room.writer->position();
    QFile::remove(room.fileName());
    QFile::remove(room.fileName() + QLatin1String("-wal"));
    QFile::remove(room.fileName() + QLatin1String("-shm"));
    QFile::rename(copy, room.fileName());
    commit(room, {{1, 4}});
    EXPECT_EQ(before.file, room.writer->position().file);
    EXPECT_EQ(2, room.writer->position().sequence);
    EXPECT_EQ(2u, room.writer->position().firstNumber);
    checkPosition(room, numbered);
}

TEST(HistoryLog, TellsTheOldestRowThatIsLeft)
{
    HistoryRoom room(historyTags(40));
    EXPECT_EQ(0, room.reader->oldestSequence());
    commit(room, {{0, 1}});
    EXPECT_EQ(1, room.reader->oldestSequence());
    for (int tag = 1; tag < 40; ++tag)
        commit(room, {{tag, 1}});
    pack(room);
    commit(room, {{0, 2}});
    const auto file = openHistoryFile(room.fileName());
    HistoryCap tight(0);
    tight.rowBytes = 0;
    qint64 dropped = 0;
    keepWithinCap(*file, room.fileName(), tight, dropped);
    EXPECT_EQ(40, dropped);
    EXPECT_EQ(41, room.reader->oldestSequence());
    EXPECT_EQ("41 tag0 2", textOf(room.reader->rowsBehind(0, 100, 10)));
    room.kill();
}

TEST(HistoryLog, IsMadeOfAFileOfVersionOne)
{
    HistoryRoom room(historyTags(3));
    commit(room, {{0, 1}, {1, 2}, {0, 3}});
    pack(room);
    commit(room, {{2, 4}, {0, 5}});
    pack(room);
    commit(room, {{1, 6}});
    const std::string before = textOf(room.reader->rowsBehind(0, 100, 10));
    room.kill();
    {
        const auto file = openHistoryFile(room.fileName());
        EXPECT_EQ(2, file->number("SELECT count(*) FROM packings"));
        file->execute("DROP TABLE packings; DROP TABLE identity; PRAGMA user_version = 1");
    }
    room.startStation();
    commit(room, {{2, 7}});
    EXPECT_NE(0, room.writer->position().file);
    EXPECT_EQ(before + ", 7 tag2 7", textOf(room.reader->rowsBehind(0, 100, 10)));
    EXPECT_EQ("3 tag0 3, 4 tag2 4, 5 tag0 5", textOf(room.reader->rowsBehind(2, 5, 10)));
    const auto file = openHistoryFile(room.fileName());
    // The packs of rows 1 to 3 overlap; those of row 4 and row 5 stand alone.
    EXPECT_EQ(3, file->number("SELECT count(*) FROM packings"));
    EXPECT_EQ(5, file->number("SELECT max(first) FROM packings"));
}

/// Random rows, packings and drops: what the log tells beside a plain list.
TEST(HistoryLog, IsTheListOfTheRowsThatAreLeft)
{
    enum { TAGS = 7, COMMITS = 300 };
    std::random_device seeds;
    const unsigned seed = seeds();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    const auto upTo = [&random](int most) {
        return std::uniform_int_distribution<int>(0, most)(random);
    };
    HistoryRoom room(historyTags(TAGS));
    NumberedRows numbered;
    room.intake->setRowListener(&numbered);
    for (int i = 0; i < COMMITS; ++i) {
        for (int answer = upTo(30); answer > 0; --answer)
            room.answer(upTo(TAGS - 1), upTo(30000));
        room.clock.passMs(1000);
        room.writer->turn();
        if (upTo(4) == 0) pack(room);
        if (upTo(100) == 0) {
            const auto file = openHistoryFile(room.fileName());
            file->execute(
                "DELETE FROM packs WHERE id IN (SELECT id FROM packs ORDER BY id LIMIT 3)");
        }
        const std::set<qint64> left = leftRows(room);
        const qint64 end = qint64(numbered.rows.size());
        const qint64 from = upTo(int(end)), last = upTo(int(end) + 5);
        const size_t most = size_t(1 + upTo(60));
        std::vector<LoggedRow> wanted;
        for (qint64 s = from + 1; s <= std::min(last, end) && wanted.size() < most; ++s)
            if (left.count(s)) wanted.push_back({s, numbered.rows[size_t(s) - 1]});
        ASSERT_EQ(textOf(wanted), textOf(room.reader->rowsBehind(from, last, int(most))))
            << from << ' ' << last << ' ' << most;
    }
}
