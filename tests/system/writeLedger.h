#ifndef WRITE_LEDGER_H
#define WRITE_LEDGER_H

#include "session/sessionSink.h"
#include "session/writeJobs.h"

#include <map>
#include <set>
#include <vector>

/// Records the writes of a test and their ends. From them it knows the values that the PLC may
/// hold.
class WriteLedger
{
public:
    void handedIn(int job, const std::vector<ElementWrite>& elements);
    void ended(const JobEnd& end);

    /// Number of jobs without an end.
    int open() const
    {
        return int(m_open.size());
    }

    /// Number of ends of unknown jobs or of jobs that had already ended.
    int surplusEnds() const
    {
        return m_surplusEnds;
    }

    int count(JobEnd::Outcome outcome) const;

    /// The values that the PLC may hold: the newest confirmed value, and each newer value whose
    /// write timed out, because only its answer may be missing. The first value is 0.
    std::set<QByteArray> possibleValues(int station, const QString& area, int number) const;

private:
    using Element = std::tuple<int, QString, int>;

    struct Written
    {
        int job;
        QByteArray bytes;
    };

    std::set<int> m_open;
    std::map<int, JobEnd::Outcome> m_outcomes;
    std::map<int, size_t> m_elements; ///< of each job
    std::map<Element, std::vector<Written>> m_written;
    int m_surplusEnds = 0;
};

#endif
