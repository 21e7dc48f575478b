#ifndef WRITE_JOBS_H
#define WRITE_JOBS_H

#include "session/sessionSink.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
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
///     add() ---> waiting --- takeNext() ---> outstanding --- ended() ---> over
///                  | ^                            |
///                  | +--------- putBack() --------+
///                  +--- failWaiting(), or a newer write of the element ---> over
///
/// - Waiting elements are taken in the order of add(). This holds for a station also after
///   putBack(): none of its elements is taken until all that the driver had have come back.
/// - At most MOST_OUTSTANDING elements are with the driver: its queue holds 513 elements and
///   replaces the last element when it is full.
/// - A second write of the same element waits until the first has ended: the driver would take the
///   first acknowledgement for both writes.
/// - A newer write of a waiting element replaces the older write, which ends as failed.
class WriteJobs
{
public:
    enum { MOST_OUTSTANDING = 500 };

    /// True when the writes of a station are to wait.
    using IsHeld = std::function<bool(int station)>;

    /// The times that the frame of an outstanding element went out.
    using TimesSent = std::function<int(int station, const QString& area, int number)>;

    void add(int job, const std::vector<ElementWrite>& elements);

    /// The next element for the driver. It is outstanding until ended() or putBack().
    /// @param isHeld  empty: no station is held
    std::optional<ElementWrite> takeNext(const IsHeld& isHeld = nullptr);

    /// The driver has ended the write of an element.
    /// @param end  its outcome, execution and reason
    /// @return false when the element was not outstanding
    bool ended(int station, const QString& area, int number, const JobEnd& end);

    /// The driver has given up the write of an element unsent, and it is to wait again.
    void putBack(int station, const QString& area, int number);

    /// An element of the station was put back, and the driver still has other elements of it. Let
    /// none of them be sent, and put them back, too.
    bool isComingBack(int station) const;

    bool hasWaiting(int station) const;

    /// Ends the waiting elements of a station. Elements with the driver are kept.
    /// @param end  their outcome, execution and reason
    void failWaiting(int station, const JobEnd& end);

    /// Ends all elements as lost.
    /// @param why  in words
    void dropAll(const QString& why, const TimesSent& timesSent);

    std::vector<JobEnd> takeEnded();

    int outstanding() const
    {
        return int(m_outstanding.size());
    }

    /// The elements with the driver.
    std::vector<ElementWrite> outstandingWrites() const;

private:
    using Element = std::tuple<int, QString, int>;

    struct Pending
    {
        int job;
        quint64 turn; ///< position in m_order
        ElementWrite write;
    };

    struct Job
    {
        int elementsLeft = 0;
        JobEnd end;
    };

    static bool hasStation(const std::map<Element, Pending>& elements, int station);
    void wait(const Element& element, const Pending& pending);
    void endElement(int job, const QString& label, const JobEnd& end);

    std::map<int, Job> m_jobs;
    std::map<Element, Pending> m_waiting;
    std::map<quint64, Element> m_order; ///< the waiting elements by their turn
    quint64 m_lastTurn = 0;
    std::map<Element, Pending> m_outstanding;
    std::set<int> m_comingBack; ///< stations of which an element was put back; see isComingBack()
    std::vector<JobEnd> m_ended;
};

#endif
