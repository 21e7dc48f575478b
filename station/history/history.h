#ifndef HISTORY_H
#define HISTORY_H

#include "values/linkValues.h"

#include <functional>
#include <memory>

/// What happened to the values, in an SQLite file. One thread writes it, once a second. Trouble
/// with the file never reaches the links' threads.
class History : public ValueListener
{
public:
    struct Settings
    {
        QString file; ///< DIR/history.sqlite
        qint64 capBytes = qint64(256) * 1024 * 1024;
        qint64 overrideMs = 600000; ///< a value that does not change is kept so often
    };

    /// The values of a span of time.
    struct Bucket
    {
        qint64 time = 0; ///< its begin, ms since 1970
        bool isGood = false;
        double minimum = 0, maximum = 0, last = 0; ///< only when good
    };

    struct Query
    {
        QString link, tag;
        qint64 from = 0, until = 0; ///< ms since 1970
        int points = 600;
    };

    struct Standing
    {
        qint64 rows = 0;
        qint64 dropped = 0; ///< rows that could not be kept since the start
        QString trouble;    ///< why it is not written; empty: it is
    };

    /// Calls it for each row of a span, oldest first, until it returns false.
    struct Row
    {
        qint64 time = 0;
        double value = 0;
        bool hasValue = false;
        Quality quality = BAD;
    };

    History(const Settings& settings, const StationClock& clock);
    ~History() override;

    /// The links whose qualities are looked at once a second: a value that grows old is no news of
    /// the link. Called from the history's thread.
    using LinksNow = std::function<std::vector<std::shared_ptr<const LinkValues>>()>;
    void start(LinksNow links);

    void tagChanged(const LinkValues& link, int tag, const TagReading& reading) override;

    // From any thread.
    std::vector<Bucket> buckets(const Query& query) const;
    /// At most `most` rows behind `after`, oldest first.
    std::vector<Row> rows(const Query& query, qint64 after, int most) const;
    Standing standing() const;

private:
    class Store;
    const std::unique_ptr<Store> m_store;
};

#endif
