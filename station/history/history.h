#ifndef HISTORY_H
#define HISTORY_H

#include "history/historyWriter.h"
#include "history/secondsThread.h"

/// What happened to the values, in an SQLite file. One thread writes it, once a second. Trouble
/// with the file never reaches the links' threads.
class History : public ValueListener, public SampleLog
{
public:
    struct Settings
    {
        QString file;                                ///< DIR/history.sqlite
        qint64 capBytes = qint64(256) * 1024 * 1024; ///< of the file and its log; 4 MiB or more
        qint64 overrideMs = 600000; ///< a value that does not change is kept so often
    };

    using Bucket = HistoryBucket;
    using Query = HistoryQuery;
    using Row = HistoryRow;
    using Standing = HistoryStanding;

    History(const Settings& settings, const StationClock& clock);

    ~History() override;

    /// Call it before the links start; the listener must outlive the history.
    void setRowListener(RowListener* listener);

    /// The links whose qualities are looked at once a second: a value that grows old is no news of
    /// the link. Called from the history's thread.
    void start(HistoryIntake::LinksNow links);

    /// Writes what is left, and ends the run of the station. What is told from now on is no part of
    /// it: call it before the links stop, or the end of each is told twice, as a bad value and as
    /// the end of the run. The owner's thread calls it.
    void stop();

    void tagChanged(const LinkValues& link, int tag, const TagReading& reading) override;

    // From any thread. They read the file, and may wait for the disk. They tell what was committed,
    // up to a second ago. A file that cannot be read tells nothing.

    /// The span in `points` parts.
    std::vector<Bucket> buckets(const Query& query);

    /// At most `most` rows, oldest first, with the ends of the runs. To go on behind a row, put its
    /// time into `from` and its sequence into `after`; 0: from the first row on.
    std::vector<Row> rows(const Query& query, qint64 after, int most);

    Standing standing() const;

    LogPosition position() const override;
    std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, int most) override;
    qint64 oldestSequence() override;

private:
    const HistoryCap m_cap;
    HistoryIntake m_intake; ///< guards itself
    HistoryReader m_reader; ///< guards itself
    HistoryWriter m_writer; ///< guards itself
    SecondsThread m_thread;
};

#endif
