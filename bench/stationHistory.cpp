// How much the station's history costs: rows written, buckets read, bytes kept.
//
// usage: stationHistory [FOLDER]
//   FOLDER  for the files, which take up to 200 MB; default: a temporary one
// Times are processor time of this process, also where they are called a second: so they hold on a
// machine that does something else, too. The longest time by the wall clock stands beside them.
// Exit status: 0 the goals are met, 1 one is missed.

#include "history/bucketQuery.h"
#include "history/historySchema.h"
#include "history/historyWriter.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <random>

namespace {

enum { ROWS_A_SECOND = 10000, RUNS = 21, MOST_QUERY_MS = 50 };
const qint64 BEGIN = 1700000000000;
const qint64 CAP = qint64(1024) * 1024 * 1024;

/// A clock that goes on by the second.
class SecondsClock : public StationClock
{
public:
    qint64 steady() const override
    {
        return m_ms * 1000;
    }
    qint64 wall() const override
    {
        return BEGIN + m_ms;
    }
    void pass(qint64 ms)
    {
        m_ms += ms;
    }

private:
    qint64 m_ms = 0;
};

double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

double wallSeconds()
{
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    return now.count();
}

std::vector<Tag> benchTags(int count)
{
    std::vector<Tag> tags(static_cast<size_t>(count));
    for (size_t i = 0; i < tags.size(); ++i) {
        tags[i].name = QLatin1String("tag") + QString::number(i);
        tags[i].type = i % 4 == 0 ? Tag::FLOAT32 : Tag::INT16;
    }
    return tags;
}

/// A station with one link whose tags change all the time, each in its turn.
class BusyStation
{
public:
    BusyStation(const QString& file, int tags)
        : m_link(QLatin1String("plc"), benchTags(tags), m_clock),
          m_intake({600000, m_cap.waitingRows}, m_clock),
          m_reader(file),
          m_writer(file, m_cap, m_intake, m_reader, m_clock)
    {
    }

    void second()
    {
        const int parts = 100;
        for (int part = 0; part < parts; ++part) {
            for (int i = 0; i < ROWS_A_SECOND / parts; ++i)
                change();
            m_clock.pass(1000 / parts);
        }
        m_writer.turn();
    }

    qint64 rows() const
    {
        return m_writer.standing().rows;
    }

private:
    void change()
    {
        const Tag& tag = m_link.tags()[m_next];
        const quint32 bits = qToLittleEndian(quint32(0x41000000u + (m_random() & 0xFFFFFu)));
        TagReading reading;
        reading.bytes = QByteArray(reinterpret_cast<const char*>(&bits), 2 * tag.units());
        reading.quality = GOOD;
        reading.time = m_clock.wall();
        m_intake.tagChanged(m_link, int(m_next), reading);
        m_next = (m_next + 1) % m_link.tags().size();
    }

    const HistoryCap m_cap{CAP};
    SecondsClock m_clock;
    LinkValues m_link;
    HistoryIntake m_intake;
    HistoryReader m_reader;
    HistoryWriter m_writer;
    std::mt19937 m_random{1};
    size_t m_next = 0;
};

/// @return whether a second of rows always takes less than a second
bool writeRows(const QString& file, int tags, int seconds)
{
    BusyStation station(file, tags);
    const double start = processorSeconds();
    double longest = 0;
    for (int i = 0; i < seconds; ++i) {
        const double begin = wallSeconds();
        station.second();
        longest = std::max(longest, wallSeconds() - begin);
    }
    const double share = (processorSeconds() - start) / seconds;
    const qint64 bytes = QFileInfo(file).size() + QFileInfo(file + QLatin1String("-wal")).size();
    std::printf("%9lld rows of %4d tags   %5.1f %% of a core at %d rows/s   longest second %3.0f ms"
                "   %4.1f bytes a row\n",
                static_cast<long long>(station.rows()), tags, 100 * share, ROWS_A_SECOND,
                1000 * longest, double(bytes) / double(station.rows()));
    return share < 1 && longest < 1;
}

/// @return whether a query is fast enough, in a file that was just opened and later
bool readBucketsOf(const QString& name, qint64 rows, qint64 seconds, int points)
{
    const auto file = openHistoryForReading(name);
    const HistoryQuery query{QLatin1String("plc"), QLatin1String("tag0"), BEGIN + 137,
                             BEGIN + seconds * 1000 - 77, points};
    std::vector<double> times;
    for (int run = 0; run < RUNS; ++run) {
        const double start = processorSeconds();
        const std::vector<HistoryBucket> buckets = readBuckets(*file, query);
        times.push_back(1000 * (processorSeconds() - start));
        const bool isWhole = std::all_of(buckets.begin() + 1, buckets.end() - 1,
                                         [](const HistoryBucket& bucket) { return bucket.isGood; });
        if (!isWhole || buckets.size() != size_t(points)) return false;
    }
    const double first = times[0];
    std::sort(times.begin(), times.end());
    std::printf("%9lld rows of one tag    %5d buckets: first %5.1f ms, median %5.1f ms, longest "
                "%5.1f ms\n",
                static_cast<long long>(rows), points, first, times[RUNS / 2], times.back());
    return times.back() <= MOST_QUERY_MS;
}

} // namespace

int main(int count, char** arguments)
{
    QTemporaryDir temporary;
    const QString folder = count > 1 ? QString::fromLocal8Bit(arguments[1]) : temporary.path();
    bool isMet = true;
    for (const int tags : {1000, 40}) {
        const QString name = folder + QLatin1String("/many.sqlite") + QString::number(tags);
        isMet = writeRows(name, tags, 120) && isMet;
    }
    for (const int seconds : {10, 100, 1000}) {
        const QString name = folder + QLatin1String("/one.sqlite") + QString::number(seconds);
        isMet = writeRows(name, 1, seconds) && isMet;
        for (const int points : {100, 1000})
            isMet = readBucketsOf(name, qint64(seconds) * ROWS_A_SECOND, seconds, points) && isMet;
    }
    return isMet ? 0 : 1;
}
