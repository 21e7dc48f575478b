#ifndef JOB_AUDIT_H
#define JOB_AUDIT_H

#include "machine/recipeJob.h"
#include "machine/writeEnd.h"
#include "values/stationClock.h"
#include "values/stationEvents.h"

#include <array>
#include <atomic>

/// What somebody has asked of a link: who, and which.
struct JobAsked
{
    quint64 id = 0; ///< of the job, counted over the whole station
    QString link;
    QString from; ///< "127.0.0.1:50000"
};

/// The account of all writes and recipes of the station. It numbers them, and tells the end of each
/// in one place: by an event for those who look on, and by one line for the record:
///
///     2026-05-04T10:11:12.345Z from 127.0.0.1:50000: write 7 of "plc" "setpoint" = 21.5:
///     confirmed, it holds 21.5                                              (in one line)
///
/// Names stand in quotes, so that no name can pass as another part of the line or as a line. So
/// does a sender that is more than an address: its topic holds names, too. What is refused before
/// it becomes a job has a line and no event:
///
///     2026-05-04T10:11:12.345Z from "mqtt://127.0.0.1:1883 kakb/hall/plc/up/set": write 8 of
///     "plc" "up": refused: tag "up" is read-only                            (in one line)
///
/// Events:
///     WRITE   {"id","link","tag","value","outcome","reason","held"}; `value` is what was asked
///             for, `held` what the tag holds since, `reason` null after a confirmation
///     RECIPE  {"id","link","kind","done","blocks"} on the way, and at the end
///             {"id","link","kind","outcome","block","reason","rows","differences"}; `kind` is
///             "download", "upload" or "compare", `differences` their number; `block` and `reason`
///             are null unless it failed
///
/// Any thread calls it.
class JobAudit
{
public:
    /// Takes one line without its end. It must not wait.
    using PutLine = std::function<void(const QByteArray& line)>;

    /// @param putLine  must take calls of several threads at once
    JobAudit(StationEvents& events, const StationClock& clock, PutLine putLine);

    quint64 nextId()
    {
        return ++m_lastId;
    }

    /// @param value  as asked for, in the format of intf_setData
    void writeEnded(const JobAsked& asked, const Tag& tag, const QByteArray& value,
                    const WriteEnd& end);

    /// A write or a recipe that is refused before it goes to a link.
    void writeRefused(const JobAsked& asked, const QString& tag, const QString& reason);
    void recipeRefused(const JobAsked& asked, const RecipeRequest& request, const QString& reason);

    /// Something that names no tag, or cannot be read.
    /// @param what  in the words of a stranger
    void refused(const QString& from, const QString& what, const QString& reason);

    /// The writes since the start that had this outcome. Those that no link was asked for do not
    /// count.
    quint64 writes(WriteEnd::Outcome outcome) const
    {
        return m_writes[outcome];
    }

    void recipeProgress(const JobAsked& asked, RecipeRequest::Kind kind, int done, int blocks);
    void recipeEnded(const JobAsked& asked, const RecipeRequest& request, const RecipeEnd& end);

    /// For the record alone: the simulated PLC behind a link has ended, and is started again.
    void simulatorEnded(const QString& link);

private:
    void put(qint64 time, const QString& from, const QByteArray& what, const QByteArray& outcome);

    StationEvents& m_events;
    const StationClock& m_clock;
    const PutLine m_putLine;
    std::atomic<quint64> m_lastId{0};
    std::array<std::atomic<quint64>, WriteEnd::OUTCOMES> m_writes = {}; ///< by outcome
};

#endif
