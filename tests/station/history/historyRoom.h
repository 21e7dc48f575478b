#ifndef HISTORY_ROOM_H
#define HISTORY_ROOM_H

#include "history/historyWriter.h"

#include "values/testClock.h"

#include <QTemporaryDir>

/// A history without a thread, with one link, on a clock that the test moves.
class HistoryRoom : public ValueListener
{
public:
    enum { OVERRIDE_MS = 600000, LEAST_CAP = 4 * 1024 * 1024 };

    /// @param tags  of the link "plc"
    explicit HistoryRoom(const std::vector<Tag>& tags, qint64 capBytes = LEAST_CAP);

    /// The station starts, or ends without any other word: a kill.
    void startStation();
    void kill();

    /// One second passes, and the history's thread has its turn.
    void second();
    void seconds(int count);
    void turn();

    /// The link's thread has an answer, or bad news, for a tag.
    void answer(int tag, double number);
    void bad(int tag, const QString& trouble);

    void tagChanged(const LinkValues& values, int tag, const TagReading& reading) override;

    QString fileName() const;

    /// The last value of each of the buckets, such as "5 5 - 7"; "-" when nothing was good. Times
    /// are ms since `begin`.
    std::string lasts(qint64 from, qint64 until, int points, int tag = 0) const;
    std::vector<HistoryBucket> buckets(qint64 from, qint64 until, int points, int tag = 0) const;

    /// The rows of a tag, such as "100 5 good, 2100 5 stale": ms since `begin`, value, quality.
    std::string rows(int tag = 0) const;

    TestClock clock;
    const qint64 begin; ///< ms since 1970
    QTemporaryDir folder;
    std::vector<Tag> tags; ///< the next start of the station takes them
    std::shared_ptr<LinkValues> link;
    HistoryCap cap;
    std::unique_ptr<HistoryIntake> intake;
    std::unique_ptr<HistoryReader> reader;
    std::unique_ptr<HistoryWriter> writer;
};

/// Tags of one type, named "tag0", "tag1" ...
std::vector<Tag> historyTags(int count, Tag::Type type = Tag::INT16);

/// The bytes of an answer for a tag.
QByteArray answerBytes(const Tag& tag, double number);

#endif
