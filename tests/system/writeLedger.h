#ifndef WRITE_LEDGER_H
#define WRITE_LEDGER_H

#include "session/sessionSink.h"
#include "session/writeJobs.h"

#include <map>
#include <set>
#include <vector>

/// What a test has written, what became of each write, and what the PLC may hold because of it.
class WriteLedger
{
public:
    void handedIn(int job, const std::vector<ElementWrite>& elements);
    void ended(const JobEnd& end);

    /// Jobs without an end yet.
    int open() const
    {
        return int(m_open.size());
    }

    /// Ends of jobs that were not there, or had ended before.
    int surplusEnds() const
    {
        return m_surplusEnds;
    }

    int count(JobEnd::Outcome outcome) const;

    /// What the PLC may hold: the newest value that it confirmed, and any newer one of whose end
    /// only the answer is missing. Zero is what it holds at first.
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
