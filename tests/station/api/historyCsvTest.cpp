#include "api/historyCsv.h"

#include "api/historyText.h"

#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <map>
#include <thread>

namespace {

Tag tagNamed(const char* name, Tag::Type type = Tag::UINT16)
{
    Tag tag;
    tag.name = QString::fromUtf8(name);
    tag.type = type;
    return tag;
}

HistoryCsv::Series seriesOf(const Tag& tag)
{
    HistoryCsv::Series series;
    series.tag = tag;
    series.query.link = QLatin1String("plc");
    series.query.tag = tag.name;
    series.query.until = 10000;
    return series;
}

HistoryRow rowOf(qint64 sequence, qint64 time, double value, Quality quality = GOOD)
{
    HistoryRow row;
    row.sequence = sequence;
    row.time = time;
    row.value = value;
    row.hasValue = true;
    row.quality = quality;
    return row;
}

/// Rows by tag, as a history pages them: from a time on, behind a sequence.
class KeptRows
{
public:
    std::map<QString, std::vector<HistoryRow>> rows;

    HistoryCsv::Rows reader() const
    {
        return [this](const HistoryQuery& query, qint64 after, int most) {
            std::vector<HistoryRow> found;
            const auto kept = rows.find(query.tag);
            if (kept == rows.end()) return found;
            for (const HistoryRow& row : kept->second) {
                if (row.time >= query.from && row.sequence > after && int(found.size()) < most)
                    found.push_back(row);
            }
            return found;
        };
    }
};

QByteArray allPages(HistoryCsv csv)
{
    const int mostPages = 20; // more than any test has
    QByteArray all;
    for (int pages = 0; pages < mostPages; ++pages)
        all += csv.nextPage();
    return all;
}

QByteArray lineOf(const Tag& tag, const HistoryRow& row)
{
    return historyCsvLine(seriesOf(tag).query, tag, row);
}

/// What a client gets that reads few bytes at a time.
QByteArray readInPieces(HttpBody& body, size_t size, const std::atomic<int>& wakes)
{
    QByteArray all;
    std::vector<char> piece(size);
    for (int seen = 0;;) {
        const qint64 count = body.read(piece.data(), size);
        if (count == HttpBody::END) return all;
        if (count > 0) {
            all.append(piece.data(), int(count));
            continue;
        }
        while (wakes == seen)
            std::this_thread::yield();
        ++seen;
    }
}

} // namespace

TEST(HistoryCsv, HasALineForEachRowOfEachTag)
{
    KeptRows kept;
    kept.rows[QLatin1String("a")] = {rowOf(1, 100, 5), rowOf(3, 200, 5, STALE)};
    kept.rows[QLatin1String("b")] = {rowOf(2, 150, 7, BAD)};
    EXPECT_EQ(
        "time,link,tag,value,quality\r\n"
        "100,plc,a,5,good\r\n"
        "200,plc,a,5,stale\r\n"
        "150,plc,b,7,bad\r\n",
        allPages(HistoryCsv({seriesOf(tagNamed("a")), seriesOf(tagNamed("b"))}, kept.reader())));
}

TEST(HistoryCsv, HasOnlyItsHeadWithoutRows)
{
    EXPECT_EQ("time,link,tag,value,quality\r\n",
              allPages(HistoryCsv({seriesOf(tagNamed("a"))}, KeptRows().reader())));
    EXPECT_EQ("time,link,tag,value,quality\r\n", allPages(HistoryCsv({}, KeptRows().reader())));
}

TEST(HistoryCsv, HasEachRowOnceOverManyPages)
{
    KeptRows kept;
    const int count = 3 * HistoryCsv::PAGE_ROWS;
    for (int row = 1; row <= count; ++row) // many rows of one time at the ends of the pages
        kept.rows[QLatin1String("a")].push_back(rowOf(row, row / 300, row));
    const QByteArray csv = allPages(HistoryCsv({seriesOf(tagNamed("a"))}, kept.reader()));
    EXPECT_EQ(count + 1, csv.count("\r\n"));
    EXPECT_EQ(1, csv.count(",501,good"));
}

TEST(HistoryCsv, QuotesNames)
{
    EXPECT_EQ("1,plc,\"tank \"\"1\"\", left\",2,good\r\n",
              lineOf(tagNamed("tank \"1\", left"), rowOf(1, 1, 2)));
}

TEST(HistoryCsv, HasTheDigitsOfTheTagsType)
{
    const Tag level = tagNamed("level", Tag::FLOAT32);
    EXPECT_EQ("1,plc,level,0.1,good\r\n", lineOf(level, rowOf(1, 1, double(0.1f))));
    EXPECT_EQ("1,plc,level,nan,good\r\n",
              lineOf(level, rowOf(1, 1, std::numeric_limits<double>::quiet_NaN())));
    EXPECT_EQ("1,plc,level,-inf,good\r\n",
              lineOf(level, rowOf(1, 1, -std::numeric_limits<double>::infinity())));
    EXPECT_EQ("1,plc,n,4294967295,good\r\n",
              lineOf(tagNamed("n", Tag::UINT32), rowOf(1, 1, 4294967295.0)));
    EXPECT_EQ("1,plc,b,1,good\r\n", lineOf(tagNamed("b", Tag::BOOL), rowOf(1, 1, 1)));
    HistoryRow never;
    never.time = 1;
    EXPECT_EQ("1,plc,n,,bad\r\n", lineOf(tagNamed("n"), never));
}

TEST(HistoryCsv, IsSentAPageAtATime)
{
    KeptRows kept;
    for (int row = 1; row <= 2 * HistoryCsv::PAGE_ROWS; ++row)
        kept.rows[QLatin1String("a")].push_back(rowOf(row, row, row));
    const HistoryCsv csv({seriesOf(tagNamed("a"))}, kept.reader());
    std::atomic<int> wakes{0};
    const std::shared_ptr<HttpBody> body =
        historyCsvBody(csv, std::make_shared<BackgroundWork>(), [&wakes] { ++wakes; });
    EXPECT_EQ(allPages(csv), readInPieces(*body, 7, wakes));
}

TEST(HistoryText, TellsGoodAndEmptyBuckets)
{
    HistoryQuery query = seriesOf(tagNamed("a")).query;
    HistoryBucket good;
    good.time = 0;
    good.isGood = true;
    good.minimum = double(0.1f);
    good.maximum = 2;
    good.last = 1.5;
    HistoryBucket empty;
    empty.time = 5000;
    EXPECT_EQ(R"({"link":"plc","tag":"a","from":0,"to":10000,)"
              R"("buckets":[[0,0.1,2,1.5],[5000,null,null,null]]})",
              historyDocument(query, tagNamed("a", Tag::FLOAT32), {good, empty}));
}
