#ifndef HISTORY_INTAKE_H
#define HISTORY_INTAKE_H

#include "history/historyRow.h"
#include "samples/rowListener.h"
#include "values/linkValues.h"

#include <QHash>
#include <QPair>

#include <memory>

/// Decides which readings become rows, and keeps those rows until they are written. Any thread
/// calls it.
///
///     links' threads   tagChanged() --+
///                                     v
///     history's thread look() ------> notes ------> take() --> the file
///
/// A row that finds room gets the next number, and each row is told to the listener in that order.
///
/// A reading becomes a row when the quality changed, when the value is more than the deadband away
/// from that of the last row, and when the last row is as old as `override`.
///
/// The clock is read with each note. When nobody looked for a while, because the process was
/// stopped or the machine slept, or when the clock was set, the run of the station ends at the last
/// look and a new one begins: a value that nobody looked at is not called good.
class HistoryIntake
{
public:
    struct Limits
    {
        qint64 overrideMs;
        size_t mostRows; ///< rows that wait to be written
    };

    /// A row, or a break: the station did not run, or time did not pass, from `end` to `begin`.
    struct Note
    {
        enum Kind { ROW, BREAK };

        Kind kind = ROW;
        int tag = 0; ///< index in Taken::tags
        HistoryRow row;
        qint64 end = 0, begin = 0; ///< of a break, ms since 1970
    };

    struct TagName
    {
        QString link, tag;
    };

    /// What was noted since the last time.
    struct Taken
    {
        std::vector<Note> notes;
        std::vector<TagName> newTags; ///< those whose index is new since the last time
        qint64 until = 0;             ///< it is complete up to this time, ms since 1970
        quint64 number = 0;           ///< of the last row that was noted; 0: there was none
    };

    HistoryIntake(const Limits& limits, const StationClock& clock);

    /// Call it before the first reading; the listener must outlive the intake.
    void setRowListener(RowListener* listener);

    /// Notes a reading of a tag that changed.
    void tagChanged(const LinkValues& link, int tag, const TagReading& reading);

    /// Notes what nobody tells: values that grew old, rows that are due, links that are gone. Call
    /// it about once a second.
    using Links = std::vector<std::shared_ptr<const LinkValues>>;
    using LinksNow = std::function<Links()>;
    void look(const Links& links);

    Taken take();

    /// Nothing more is noted. What was noted can still be taken.
    void close();

    /// Forgets what was written: each tag gets a row at the next look.
    void writeAllAgain();

    /// When the first run began, ms since 1970.
    qint64 begin() const
    {
        return m_begin;
    }

    /// Rows that found no room since the start.
    qint64 dropped() const;

private:
    /// What the last row of a tag said.
    struct Kept
    {
        int tag = 0;
        TagName name;
        bool isKept = false; ///< a row was noted in this run
        HistoryRow row;
        qint64 noted = 0;   ///< on the steady clock, microseconds
        quint64 change = 0; ///< the number of the change that was noted last
        quint64 look = 0;   ///< the number of the look that saw it last
    };

    Kept& keptOf(const LinkValues& link, int tag);
    void pulse();
    void breakRun(qint64 end, qint64 begin);
    bool isDue(const Kept& kept, const HistoryRow& row, double deadband) const;
    bool hasRoom();
    void note(Kept& kept, HistoryRow row);
    void tell(const Kept& kept, quint64 number) const;
    void consider(Kept& kept, const Tag& tag, const TagReading& reading);
    void endUnseen();
    HistoryRow rowOf(const Tag& tag, const TagReading& reading) const;

    const Limits m_limits;
    const StationClock& m_clock;
    const qint64 m_begin;
    RowListener* m_listener = nullptr; ///< constant behind the first reading; null: nobody is told

    mutable std::mutex m_mutex; ///< guards all members below
    QHash<QPair<QString, QString>, Kept> m_kept;
    std::vector<TagName> m_newTags;
    std::vector<Note> m_notes;
    qint64 m_steady, m_wall; ///< of the last pulse
    qint64 m_runBegin;       ///< ms since 1970
    quint64 m_changes = 0, m_looks = 0;
    quint64 m_numbers = 0; ///< of the last row that found room
    qint64 m_dropped = 0;
    bool m_isClosed = false;
    std::optional<qint64> m_fullSince; ///< rows find no room since then, ms since 1970
};

#endif
