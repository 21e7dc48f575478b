#ifndef WRITE_JOBS_H
#define WRITE_JOBS_H

#include "session/sessionSink.h"

#include <deque>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

/// One element to write: a word (two bytes, low byte first) or a bit (one byte).
struct ElementWrite
{
    int station = 0;
    QString area;
    int number = 0;
    QByteArray bytes;
    QString label; ///< what the user calls it
};

/// The writes on their way to the PLC.
///
/// The driver's queue holds 513 elements and replaces the last one beyond that, so only some are
/// handed to it at a time. Of two writes of one element the driver would take the first one's
/// acknowledgement for both, so the second waits here until the first has ended; of several that
/// wait, the newest takes the place of the older ones, which end as failed.
class WriteJobs
{
public:
    enum { MOST_OUTSTANDING = 500 };

    void add(int job, const std::vector<ElementWrite>& elements);

    /// The next element that the driver may be handed; it counts as outstanding from then on.
    std::optional<ElementWrite> takeNext();

    /// The driver is done with an outstanding element.
    /// @param trouble  empty when the PLC acknowledged it
    /// @return false when no such element was outstanding
    bool ended(int station, const QString& area, int number, JobEnd::Outcome outcome,
               const QString& trouble);

    /// Gives up the elements of a station that have not been handed to the driver.
    void failWaiting(int station, const QString& trouble);

    std::vector<JobEnd> takeEnded();

    int outstanding() const
    {
        return int(m_outstanding.size());
    }

private:
    using Element = std::tuple<int, QString, int>;

    struct Waiting
    {
        int job;
        ElementWrite write;
    };

    struct Outstanding
    {
        int job;
        QString label;
    };

    struct Job
    {
        int elementsLeft = 0;
        JobEnd end;
    };

    void endElement(int job, const QString& label, JobEnd::Outcome outcome, const QString& trouble);

    std::map<int, Job> m_jobs;
    std::map<Element, Waiting> m_waiting;
    std::deque<Element> m_order; ///< of those that wait; may name some that no longer do
    std::map<Element, Outstanding> m_outstanding;
    std::vector<JobEnd> m_ended;
};

#endif
