// Random rows, stops and clock steps: the file's buckets beside those of the plainest model.
#include "historyModel.h"

#include "history/bucketQuery.h"
#include "history/historyFile.h"
#include "history/historySchema.h"
#include "history/rowPack.h"
#include "history/rowPacking.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

enum { HISTORIES = 3, COMMITS = 250, QUERIES = 25, TAGS = 2 };
const qint64 BEGIN = 1700000000000;

/// A file and a model that are told the same.
class RandomHistory
{
public:
    explicit RandomHistory(unsigned seed);

    /// Something happens, and is committed.
    void commit();
    void compare();
    void dropOldest();

private:
    qint64 upTo(qint64 most)
    {
        return std::uniform_int_distribution<qint64>(0, most)(m_random);
    }

    double randomValue();
    void addRow(HistoryIntake::Taken& taken);
    void addBreak(HistoryIntake::Taken& taken);
    void open(qint64 begin);
    std::set<qint64> leftRows();

    std::mt19937 m_random;
    QTemporaryDir m_folder;
    const QString m_name = m_folder.filePath(QLatin1String("history.sqlite"));
    const HistoryCap m_cap = HistoryCap(0);
    const std::vector<HistoryIntake::TagName> m_tags = {{QLatin1String("plc"), QLatin1String("a")},
                                                        {QLatin1String("plc"), QLatin1String("b")}};
    std::unique_ptr<HistoryFile> m_file;
    HistoryModel m_model{TAGS};
    qint64 m_now = BEGIN;
    qint64 m_lastTime[TAGS] = {BEGIN, BEGIN};
};

RandomHistory::RandomHistory(unsigned seed) : m_random(seed)
{
    open(m_now);
}

void RandomHistory::open(qint64 begin)
{
    m_file.reset();
    HistoryFile::OpenRun run;
    run.begin = begin;
    m_file = std::make_unique<HistoryFile>(m_name, m_cap, run);
    m_model.beginRun(begin);
    m_lastTime[0] = m_lastTime[1] = begin;
}

double RandomHistory::randomValue()
{
    switch (upTo(20)) {
    case 0:
        return std::numeric_limits<double>::quiet_NaN();
    case 1:
        return -std::numeric_limits<double>::infinity();
    case 2:
        return double(float(upTo(1000)) / 7);
    default:
        return double(upTo(200) - 100);
    }
}

void RandomHistory::addRow(HistoryIntake::Taken& taken)
{
    const int tag = int(upTo(TAGS - 1));
    HistoryIntake::Note note;
    note.tag = tag;
    note.row.time = m_lastTime[tag] + upTo(m_now - m_lastTime[tag]);
    note.row.hasValue = upTo(20) != 0;
    note.row.value = note.row.hasValue ? randomValue() : 0;
    note.row.quality = Quality(upTo(5) != 0 ? GOOD : upTo(1) != 0 ? STALE : BAD);
    m_lastTime[tag] = note.row.time;
    m_model.add(tag, note.row);
    taken.notes.push_back(note);
}

/// The clock is set back or forward, or nobody looked for a while.
void RandomHistory::addBreak(HistoryIntake::Taken& taken)
{
    HistoryIntake::Note note;
    note.kind = HistoryIntake::Note::BREAK;
    note.end = m_now;
    m_now += upTo(1) != 0 ? upTo(500) : -upTo(std::min<qint64>(m_now - BEGIN, 1500));
    note.begin = m_now;
    m_model.endRun(note.end);
    m_model.beginRun(note.begin);
    m_lastTime[0] = m_lastTime[1] = note.begin;
    taken.notes.push_back(note);
}

void RandomHistory::commit()
{
    if (upTo(30) == 0) { // a stop of the station
        m_now += upTo(300);
        open(m_now);
    }
    HistoryIntake::Taken taken;
    for (qint64 i = upTo(20); i > 0; --i) {
        m_now += upTo(10);
        if (upTo(150) == 0)
            addBreak(taken);
        else
            addRow(taken);
    }
    m_now += upTo(10);
    taken.until = m_now;
    m_model.endRun(m_now);
    m_file->write(taken, m_tags);
    if (upTo(2) == 0) packFreshRows(*openHistoryFile(m_name));
}

/// The rows that the tables still hold.
std::set<qint64> RandomHistory::leftRows()
{
    const auto file = openHistoryFile(m_name);
    std::set<qint64> left;
    SqliteStatement fresh(*file, "SELECT sequence FROM fresh");
    while (fresh.next())
        left.insert(fresh.integer(0));
    SqliteStatement packs(*file, "SELECT data FROM packs");
    while (packs.next()) {
        const std::vector<HistoryRow> rows = unpackedRows(packs.blob(0)).value();
        for (const HistoryRow& row : rows)
            EXPECT_TRUE(left.insert(row.sequence).second);
    }
    return left;
}

bool isSame(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

void RandomHistory::compare()
{
    const auto file = openHistoryFile(m_name);
    const std::set<qint64> left = leftRows();
    for (int i = 0; i < QUERIES; ++i) {
        const int tag = int(upTo(TAGS - 1));
        HistoryQuery query{m_tags[size_t(tag)].link, m_tags[size_t(tag)].tag, 0, 0, 0};
        query.from = BEGIN - 100 + upTo(m_now - BEGIN + 200);
        query.until = query.from + 1 + upTo(upTo(1) != 0 ? 200 : m_now - BEGIN + 200);
        query.points = int(1 + upTo(std::min<qint64>(query.until - query.from, 300) - 1));
        const std::vector<HistoryBucket> found = readBuckets(*file, query);
        const std::vector<HistoryBucket> expected = m_model.buckets(tag, query, left);
        ASSERT_EQ(expected.size(), found.size());
        for (size_t b = 0; b < found.size(); ++b) {
            SCOPED_TRACE(testing::Message() << "bucket " << b << " of " << query.points << " from "
                                            << query.from - BEGIN << " to " << query.until - BEGIN);
            ASSERT_EQ(expected[b].time, found[b].time);
            ASSERT_EQ(expected[b].isGood, found[b].isGood);
            if (!found[b].isGood) continue;
            ASSERT_PRED2(isSame, expected[b].minimum, found[b].minimum);
            ASSERT_PRED2(isSame, expected[b].maximum, found[b].maximum);
            ASSERT_PRED2(isSame, expected[b].last, found[b].last);
        }
    }
}

/// About half of what is in packs.
void RandomHistory::dropOldest()
{
    const size_t before = leftRows().size();
    {
        const auto file = openHistoryFile(m_name);
        HistoryCap tight(0);
        const qint64 pages = file->number("PRAGMA page_count");
        tight.rowBytes = (pages - file->number("PRAGMA freelist_count")) * 4096 * 3 / 4;
        qint64 dropped = 0;
        keepWithinCap(*file, m_name, tight, dropped);
        EXPECT_EQ(before - leftRows().size(), size_t(dropped));
        EXPECT_GT(dropped, 0);
    }
    const std::set<qint64> left = leftRows();
    ASSERT_FALSE(left.empty());
}

} // namespace

TEST(HistoryModel, IsWhatTheBucketsTell)
{
    std::random_device seeds;
    for (int i = 0; i < HISTORIES; ++i) {
        const unsigned seed = seeds();
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        RandomHistory history(seed);
        for (int commit = 0; commit < COMMITS; ++commit)
            history.commit();
        history.compare();
        history.dropOldest();
        history.compare();
        for (int commit = 0; commit < COMMITS / 4; ++commit)
            history.commit();
        history.compare();
        if (HasFatalFailure()) return;
    }
}
