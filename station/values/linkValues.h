#ifndef LINK_VALUES_H
#define LINK_VALUES_H

#include "plan/tag.h"
#include "session/linkFigures.h"
#include "session/linkSink.h"
#include "values/stationClock.h"
#include "values/tagReading.h"

#include <functional>
#include <map>
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
};

enum LinkStanding { LINK_OPENING, LINK_UP, LINK_LOST };

/// "opening", "up" or "lost".
const char* linkStandingText(LinkStanding standing);

struct StationStanding
{
    int station = 0;
    bool answers = false;
    qint64 since = 0; ///< ms since 1970
};

/// The state of a link, for people and for monitoring.
struct LinkState
{
    LinkStanding standing = LINK_OPENING;
    QString trouble;  ///< the reason of a loss
    qint64 since = 0; ///< of `standing`, ms since 1970
    LinkFigures figures;
    std::vector<StationStanding> stations; ///< by number
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
///   pass an old value off as good when it goes on.
/// - A written value is shown once the PLC has confirmed it, with the time of the echo. Until then
///   the reading is the one before the write, or what a read of the PLC brought.
///
/// All functions may be called from any thread, except those of LinkSink.
class LinkValues : public LinkSink
{
public:
    /// The end of a job of this link, from the link's thread, with no lock held.
    using JobEnded = std::function<void(const JobEnd&)>;
    using RecipeProgress = std::function<void(int job, int done)>;

    /// @param name   the link's name in the station
    /// @param turns  by tag: the planned time between two reads in microseconds, see
    /// LinkRun::turn()
    LinkValues(QString name, std::vector<Tag> tags, const StationClock& clock);

    /// Sets the turns. Call it before the link starts.
    void setTurns(std::vector<std::optional<qint64>> turns);
    void setJobEnded(JobEnded ended, RecipeProgress progress);

    /// The listener must outlive the link's run. Call it before the link starts.
    void addListener(ValueListener* listener);

    const QString& name() const
    {
        return m_name;
    }
    const std::vector<Tag>& tags() const
    {
        return m_tags;
    }

    /// What is known now. The quality is that of this moment.
    TagReading reading(int tag) const;
    std::vector<TagReading> readings() const;

    LinkState state() const;

    // Of the link's thread.
    void tagRead(int tag, const QByteArray& bytes, qint64 now) override;
    void tagValue(int tag, const QByteArray& bytes, qint64 now) override;
    void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void jobEnded(const JobEnd& end) override;
    void recipeProgress(int job, int done) override;
    void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) override;
    void fenced(const EndedExchange& fence, qint64 now) override;
    void echoFound() override;
    void linkChanged(bool connected, const QString& trouble, qint64 now) override;
    void frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now) override;
    void wireTaken(qint64 from, qint64 until) override;

private:
    struct Known
    {
        TagReading reading; ///< its quality is GOOD or BAD: age is added when it is read
        qint64 readAt = 0;  ///< on the steady clock
    };

    TagReading shown(const Known& known, int tag, qint64 now) const;
    void tellChange(int tag);

    const QString m_name;
    const std::vector<Tag> m_tags;
    const StationClock& m_clock;
    std::vector<std::optional<qint64>> m_turns; ///< constant once the link has started
    std::vector<ValueListener*> m_listeners;    ///< constant once the link has started
    JobEnded m_jobEnded;                        ///< constant once the link has started
    RecipeProgress m_recipeProgress;            ///< constant once the link has started

    mutable std::mutex m_mutex; ///< guards all members below
    std::vector<Known> m_known; ///< by tag
    LinkState m_state;
};

#endif
