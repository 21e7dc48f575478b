#ifndef SHARED_VALUES_H
#define SHARED_VALUES_H

#include "session/figureCounts.h"
#include "session/linkSink.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <vector>

/// The state of one tag.
struct TagState
{
    QByteArray bytes;   ///< value in the format of intf_getData; empty: no value yet
    qint64 readAt = -1; ///< time of the last read from the PLC; -1: never read
    qint64 changes = 0; ///< number of changes since the first value
    bool good = false;
    QString trouble; ///< the reason when the tag is not good
};

/// The news since the last SharedValues::takeNews(). Times are LinkThread::now().
struct News
{
    struct Change
    {
        int tag;
        qint64 time;
        TagState state;
    };

    struct LinkEvent
    {
        qint64 time;
        bool connected;
        QString trouble; ///< the reason of a loss
    };

    std::vector<Change> changes;
    std::vector<LinkEvent> linkEvents;
    std::vector<JobEnd> jobEnds;
    std::vector<FrameRecord> frames;
    bool isEchoFound = false; ///< the link returns the sent bytes; told once
    int recipeBlocksDone = 0; ///< of the transfer under way, or of a transfer that ended in jobEnds
    qint64 changesMissed = 0; ///< changes dropped since the start, because no thread took the news
    qint64 framesMissed = 0;  ///< frames dropped since the start
};

/// The values, figures and news of a link, shared by two threads: the link's thread writes them and
/// the owner's thread reads them. The link's thread never waits for the owner to take the news.
/// When the owner does not take them in time, further changes and frames are dropped and counted.
/// Ends of jobs are always kept; the number of jobs bounds them.
class SharedValues : public LinkSink
{
public:
    enum { MOST_CHANGES = 100000, MOST_FRAMES = 20000 };

    /// @param tags        number of tags
    /// @param keepFrames  whether News::frames is filled
    SharedValues(size_t tags, bool keepFrames);

    void tagRead(int, const QByteArray&, qint64) override {}
    void tagShown(int tag, const QByteArray& bytes, qint64 now) override;
    void tagValue(int tag, const QByteArray& bytes, qint64 now) override;
    void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) override;
    void tagsUnanswered(const std::vector<int>& tags, const QString& trouble, qint64 now) override
    {
        tagsBad(tags, trouble, now);
    }
    void stationChanged(int, bool, const QString&, qint64) override {}
    void jobEnded(const JobEnd& end) override;
    void recipeProgress(int job, int done) override;
    void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) override;
    void fenced(const EndedExchange& fence, qint64 now) override;
    void echoFound() override;
    void linkChanged(bool connected, const QString& trouble, qint64 now) override;
    void bytesCame(qint64, qint64) override {}
    void frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now) override;
    void wireTaken(qint64 from, qint64 until) override;

    /// Waits for news, at most `ms` milliseconds.
    void waitForNews(int ms);

    News takeNews();
    std::vector<TagState> tags() const;
    LinkFigures figures(qint64 now) const;

private:
    void noteChange(int tag, qint64 now);
    void noteFrame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now);
    void news();

    const bool m_keepFrames; ///< constant after construction
    mutable std::mutex m_mutex;
    std::condition_variable m_somethingNew;

    // All members below are guarded by m_mutex.
    bool m_hasNews = false;
    std::vector<TagState> m_tags;
    News m_news;
    int m_recipeJob = 0;            ///< the last job whose progress was told
    mutable FigureCounts m_figures; ///< mutable: at() forgets old exchanges
};

#endif
