#ifndef SHARED_VALUES_H
#define SHARED_VALUES_H

#include "session/linkFigures.h"
#include "session/linkSink.h"
#include "session/recentRates.h"
#include "session/runRates.h"

#include <condition_variable>
#include <mutex>
#include <vector>

/// What is known of one tag.
struct TagState
{
    QByteArray bytes;   ///< its value, as intf_getData gives it; empty: never read
    qint64 readAt = -1; ///< when it was last read from the PLC; -1: never
    qint64 changes = 0;
    bool good = false;
    QString trouble; ///< why it is not good
};

/// Something that the user's side is told of once.
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
        QString trouble; ///< of a lost link
    };

    std::vector<Change> changes;
    std::vector<LinkEvent> linkEvents;
    std::vector<JobEnd> jobEnds;
    std::vector<FrameRecord> frames;
    bool isEchoFound = false; ///< the link returns what is sent; told once
    int recipeBlocksDone = 0; ///< of the transfer under way, or of one that ended with this news
    qint64 changesMissed = 0; ///< since the start, because nobody took them
    qint64 framesMissed = 0;  ///< since the start
};

/// The values, figures and news of a run, shared by two threads: the link's thread writes them, and
/// the owner's side reads them. Neither side waits for the other. Changes and frames that nobody
/// takes in time are dropped and counted; ends of jobs are kept, as there are no more than jobs.
class SharedValues : public LinkSink
{
public:
    enum { MOST_CHANGES = 100000, MOST_FRAMES = 20000 };

    /// @param keepFrames  frames are wanted
    SharedValues(size_t tags, bool keepFrames);

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

    /// Waits until there is news, `ms` at most.
    void waitForNews(int ms);

    News takeNews();
    std::vector<TagState> tags() const;
    LinkFigures figures(qint64 now) const;

private:
    void noteChange(int tag, qint64 now);
    void news();

    const bool m_keepFrames; ///< constant after construction
    mutable std::mutex m_mutex;
    std::condition_variable m_somethingNew;

    // All below are guarded by m_mutex.
    bool m_hasNews = false;
    std::vector<TagState> m_tags;
    News m_news;
    LinkFigures m_figures; ///< without the rates
    bool m_wasConnected = false;
    int m_recipeJob = 0; ///< the last one whose progress was told
    RunRates m_wholeRun;
    mutable RecentRates m_lately; ///< forgets when it is asked
};

#endif
