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
    QString label; ///< the user's name of the element
};

/// The user's writes that wait or are with the driver.
///
/// - At most MOST_OUTSTANDING elements are with the driver: its queue holds 513 elements and
///   replaces the last element when it is full.
/// - A second write of the same element waits until the first has ended: the driver would take the
///   first acknowledgement for both writes.
/// - A newer write of a waiting element replaces the older write, which ends as failed.
class WriteJobs
{
public:
    enum { MOST_OUTSTANDING = 500 };

    void add(int job, const std::vector<ElementWrite>& elements);

    /// The next element for the driver. It is outstanding until ended().
    std::optional<ElementWrite> takeNext();

    /// The driver has ended the write of an element.
    /// @param trouble  empty when the PLC acknowledged it
    /// @return false when the element was not outstanding
    bool ended(int station, const QString& area, int number, JobEnd::Outcome outcome,
               const QString& trouble);

    /// Ends the waiting elements of a station as timed out. Elements with the driver are kept.
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
    std::deque<Element> m_order; ///< of m_waiting; may name elements that no longer wait
    std::map<Element, Outstanding> m_outstanding;
    std::vector<JobEnd> m_ended;
};

#endif
