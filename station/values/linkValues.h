#ifndef LINK_VALUES_H
#define LINK_VALUES_H

#include "session/figureCounts.h"
#include "session/linkSink.h"
#include "values/frameLog.h"
#include "values/linkState.h"
#include "values/sharedTags.h"
#include "values/stationClock.h"
#include "values/stationEvents.h"
#include "values/tagReading.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

class LinkValues;

/// Told what is new on the links. Called from a link's thread while the link's values are locked:
/// it must note its news and return, and must not call the LinkValues.
class ValueListener
{
public:
    virtual ~ValueListener() = default;

    /// The value, quality or trouble of a tag changed by news of the link. A value that grows old
    /// is not told: whoever keeps qualities looks at readings() from time to time.
    virtual void tagChanged(const LinkValues& link, int tag, const TagReading& reading) = 0;

    /// The link or one of its stations changed. `state` has no figures.
    virtual void standingChanged(const LinkValues& link, const LinkState& state)
    {
        Q_UNUSED(link);
        Q_UNUSED(state);
    }
};

/// The values of one link: the value model. The link's thread writes it through LinkSink; every
/// other part of the station reads it, and nothing else, for values.
///
///            an answer                 no answer for the limit       an answer
///   BAD ---------------------> GOOD -------------------------> STALE --------> GOOD
///    ^  never read               |  link lost, station silent,   |
///    +---------------------------+-- refused --------------------+
///
/// - A quality is worked out when it is read, from the clock: a process that was stopped does not
///   pass an old value off as good when it goes on. Bytes that it then finds are taken to be as old
///   as they can be, see LinkSink::bytesCame().
/// - The limit is three turns, or 2 s where that is longer. A tag that is read once has no limit.
/// - A written value is shown once the PLC has confirmed it, with the time of the echo. Until then
///   the reading is the one before the write, or what a read of the PLC brought. So it is after a
///   failed write.
///
///     time        write asked     sent      echo
///     reading     old             old       new
///     jobEnded()                             after the reading has changed
///
/// - Only what the PLC has told is a value: tagRead(). The driver's cache shows written values
///   early, so tagShown() and tagValue() are left aside.
///
/// All functions may be called from any thread, except those of LinkSink.
class LinkValues : public LinkSink
{
public:
    /// The end of a job of this link, from the link's thread, with no lock held.
    using JobEnded = std::function<void(const JobEnd&)>;
    using RecipeProgress = std::function<void(int job, int done)>;

    /// @param name  the link's name in the station
    LinkValues(QString name, SharedTags tags, const StationClock& clock);

    // Call these before the link starts.

    /// @param turns  by tag: the planned time between two reads in microseconds, see
    /// LinkRun::turn()
    void setTurns(std::vector<std::optional<qint64>> turns);
    void setJobEnded(JobEnded ended, RecipeProgress progress);

    /// The listener must outlive the link's run.
    void addListener(ValueListener* listener);

    /// Each change of the link becomes an event. `events` must outlive the link's run.
    void setEvents(StationEvents* events);

    const QString& name() const
    {
        return m_name;
    }
    const std::vector<Tag>& tags() const
    {
        return m_tags.all();
    }

    /// What is known now. The quality is that of this moment.
    TagReading reading(int tag) const;
    std::vector<TagReading> readings() const;

    /// Grows with each change that a listener is told, and with each change of the link or of a
    /// station. It does not grow when a value becomes stale, nor when only the time of an answer
    /// moves: see nextStale() and TagReading::time.
    quint64 version() const
    {
        return m_version;
    }

    /// The time at which the next good value becomes stale unless an answer comes, in microseconds
    /// of the steady clock; empty: none will.
    std::optional<qint64> nextStale() const;

    LinkState state() const;

    /// See FrameLog::keep().
    void keepFrames(size_t most)
    {
        m_frames.keep(most);
    }

    /// The last frames on the link.
    const FrameLog& frames() const
    {
        return m_frames;
    }

    // Of the link's thread.
    void tagRead(int tag, const QByteArray& bytes, qint64 asOf) override;
    void tagShown(int, const QByteArray&, qint64) override {}
    void tagValue(int, const QByteArray&, qint64) override {}
    void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void tagsUnanswered(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void stationChanged(int station, bool answers, const QString& trouble, qint64 now) override;
    void jobEnded(const JobEnd& end) override;
    void recipeProgress(int job, int done) override;
    void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) override;
    void fenced(const EndedExchange& fence, qint64 now) override;
    void echoFound() override {}
    void linkChanged(bool connected, const QString& trouble, qint64 now) override;
    void bytesCame(qint64 after, qint64 now) override;
    void frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now) override;
    void wireTaken(qint64 from, qint64 until) override;

private:
    struct Known
    {
        TagReading reading; ///< its quality is GOOD or BAD: age is added when it is read
        qint64 readAt = 0;  ///< on the steady clock
        QString unanswered; ///< why the last read was given up; empty: it was answered
    };

    /// When a good value becomes stale.
    struct Limit
    {
        std::optional<qint64> age; ///< microseconds; empty: never
        QString trouble;           ///< of a value that is older
    };

    std::optional<qint64> staleAt(size_t tag) const;
    bool isGood(size_t tag, qint64 now) const;
    TagReading shown(size_t tag, qint64 now) const;
    qint64 readTime(qint64 asOf, qint64 now) const;
    Known answered(const Known& before, const QByteArray& bytes, qint64 readAt, qint64 now) const;
    void noteAnswer(Known& known, qint64 readAt, qint64 now) const;
    void become(size_t tag, const Known& known);
    void becomeBad(size_t tag, const QString& trouble);
    void tellStanding() const;
    void changeLink(bool connected, const QString& trouble, qint64 now);
    void noteClock(qint64 now);

    const QString m_name;
    const SharedTags m_tags;
    const StationClock& m_clock;

    // Constant once the link has started.
    std::vector<Limit> m_limits; ///< by tag
    std::vector<ValueListener*> m_listeners;
    StationEvents* m_events = nullptr;
    JobEnded m_jobEnded;
    RecipeProgress m_recipeProgress;

    FrameLog m_frames; ///< guards itself
    std::atomic<quint64> m_version{0};

    mutable std::mutex m_mutex;     ///< guards all members below
    std::vector<Known> m_known;     ///< by tag
    LinkState m_state;              ///< its figures are not used
    mutable FigureCounts m_figures; ///< mutable: at() forgets old exchanges

    /// The steady clock at time 0 of the link's thread, or a little later: each call from the
    /// thread gives an upper limit of it, and the lowest one counts.
    std::optional<qint64> m_threadStart;
    std::optional<qint64> m_cameAfter; ///< the last bytes came after this time of the steady clock
};

#endif
