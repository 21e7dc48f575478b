#ifndef HISTORY_MODEL_H
#define HISTORY_MODEL_H

#include "history/historyIntake.h"

#include <set>

/// The history of some tags, kept in the plainest way: each millisecond has its values. It is what
/// the file's answers are compared with.
class HistoryModel
{
public:
    explicit HistoryModel(int tags) : m_tags(tags) {}

    /// A run of the station begins, or ends, at this time.
    void beginRun(qint64 time);
    void endRun(qint64 time);

    /// A row of the run. @return its sequence
    qint64 add(int tag, const HistoryRow& row);

    /// What the buckets are when only the rows of these sequences are left.
    std::vector<HistoryBucket> buckets(int tag, const HistoryQuery& query,
                                       const std::set<qint64>& left) const;

    qint64 rows() const
    {
        return m_rows;
    }

private:
    struct Run
    {
        qint64 begin, end;
        std::vector<std::vector<HistoryRow>> rows; ///< by tag
    };

    /// The values that were good in a millisecond, in their order.
    using Instant = std::vector<double>;

    void tell(const Run& run, int tag, qint64 from, const std::set<qint64>& left,
              std::vector<Instant>& instants) const;

    const int m_tags;
    std::vector<Run> m_runs;
    qint64 m_rows = 0;
};

#endif
