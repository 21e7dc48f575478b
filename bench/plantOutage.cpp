// Fills a station's history with the rows of a time in which no broker was there.
//
// usage: plantOutage FOLDER SECONDS
//   FOLDER   the state folder of the station; it has no history yet
//   SECONDS  how long the time was: 50 tags change ten times a second, and it ends now
// The rows come by the station's own intake and writer, with the times that they would have had.
// Prints the time of the first rows in milliseconds since 1970. Row i of each tag is 100 ms behind
// the row before, and has the value i modulo 60000.

#include "history/historySchema.h"
#include "history/historyWriter.h"

#include <QDateTime>
#include <QtEndian>

#include <cstdio>

namespace {

enum { TAGS = 50, CHANGES_A_SECOND = 10, VALUES = 60000, OVERRIDE_MS = 600000 };
const qint64 CAP = qint64(256) * 1024 * 1024; // the station's default
const qint64 SECOND_MS = 1000;

/// A clock that goes on by the change.
class PastClock : public StationClock
{
public:
    explicit PastClock(qint64 begin) : m_now(begin) {}

    qint64 steady() const override
    {
        return m_now * 1000;
    }
    qint64 wall() const override
    {
        return m_now;
    }
    void pass(qint64 ms)
    {
        m_now += ms;
    }

private:
    qint64 m_now;
};

std::vector<Tag> outageTags()
{
    std::vector<Tag> tags(TAGS);
    for (size_t i = 0; i < tags.size(); ++i) {
        tags[i].name = QLatin1Char('w') + QString::number(i);
        tags[i].type = Tag::UINT16;
    }
    return tags;
}

void change(HistoryIntake& intake, const LinkValues& link, int value, qint64 time)
{
    const quint16 word = qToLittleEndian(quint16(value));
    TagReading reading;
    reading.bytes = QByteArray(reinterpret_cast<const char*>(&word), sizeof word);
    reading.quality = GOOD;
    reading.time = time;
    for (int tag = 0; tag < TAGS; ++tag)
        intake.tagChanged(link, tag, reading);
}

/// @return rows in the file
qint64 fill(const QString& file, qint64 begin, int seconds)
{
    const HistoryCap cap(CAP);
    PastClock clock(begin);
    const LinkValues link(QLatin1String("plc"), outageTags(), clock);
    HistoryIntake intake({OVERRIDE_MS, cap.waitingRows}, clock);
    HistoryReader reader(file);
    HistoryWriter writer(file, cap, intake, reader, clock);
    for (int i = 0; i < seconds * CHANGES_A_SECOND; ++i) {
        change(intake, link, i % VALUES, clock.wall());
        clock.pass(SECOND_MS / CHANGES_A_SECOND);
        if (i % CHANGES_A_SECOND == CHANGES_A_SECOND - 1) writer.turn();
    }
    return writer.standing().rows;
}

} // namespace

int main(int count, char** arguments)
{
    const int seconds = count == 3 ? QByteArray(arguments[2]).toInt() : 0;
    if (seconds <= 0) {
        std::fputs("usage: plantOutage FOLDER SECONDS\n", stderr);
        return 1;
    }
    const QString file = QString::fromLocal8Bit(arguments[1]) + QLatin1String("/history.sqlite");
    const qint64 begin = QDateTime::currentMSecsSinceEpoch() - seconds * SECOND_MS;
    const qint64 rows = fill(file, begin, seconds);
    std::printf("%lld\n", static_cast<long long>(begin));
    return rows == qint64(seconds) * CHANGES_A_SECOND * TAGS ? 0 : 1;
}
