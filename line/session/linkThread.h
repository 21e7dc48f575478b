#ifndef LINK_THREAD_H
#define LINK_THREAD_H

#include "driver/driverLibrary.h"
#include "links/link.h"
#include "links/wakeableWait.h"
#include "session/driverFeeder.h"
#include "session/growingPause.h"
#include "session/linkSink.h"
#include "session/steadyTime.h"

#include <QThread>

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

/// The thread of one link. It owns the link and makes all driver calls, so the line does not wait
/// for the owner's threads. The owner hands in jobs; the thread tells the sink their ends.
///
/// The thread tells the loss of the link once and opens the link again after growing pauses.
class LinkThread : private QThread
{
public:
    using OpenLink = std::function<std::unique_ptr<Link>()>; ///< throws LinkError

    /// What becomes of the jobs when the link is lost, and of those handed in while it is lost.
    enum JobsAtLoss {
        JOBS_WAIT, ///< they are done on the next link
        JOBS_END   ///< they end as lost, and nothing of them is sent later
    };

    struct Settings
    {
        OpenLink openLink; ///< called in the link's thread
        LineTiming timing = LineTiming(LineSettings());
        ExchangeMachine::Settings exchange;
        int attempts = 3;
        JobsAtLoss jobsAtLoss = JOBS_WAIT;
        int firstPauseMs = 500; ///< before a lost link is opened again; see GrowingPause
        /// Before a lost link is opened again or a silent station is asked again; empty: 30 s for
        /// the link, see GrowingPause, and 120 time-outs for a station, see StationWatch.
        std::optional<int> longestPauseMs;
        bool reopensWhenSilent = false; ///< opens anew when no station answers and no byte comes
        qint64 hold = 0; ///< microseconds that writes wait for a silent station, see DriverFeeder
    };

    LinkThread(const DriverLibrary& driver, const Settings& settings, LinkSink& sink);

    /// Stops the thread as stop() does.
    ~LinkThread() override;

    /// Asks the thread to stop, and returns. Only the owner's thread calls it.
    /// @param why  the reason for the unfinished jobs, in words
    void askToStop(const QString& why);

    /// Stops the thread and waits for it. Before this returns, the sink has been told the ends of
    /// all jobs: unfinished jobs are lost. Only the owner's thread calls it.
    /// @param why  the reason for the unfinished jobs, in words
    void stop(const QString& why);

    /// poll() reads the tags in cycles, see DriverFeeder::poll(). know() only notes them, so that
    /// read() shows their values. Call one of the two, before start().
    void poll(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks, qint64 pace = 0);
    void know(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks);

    void start();

    /// Jobs, from any thread. The sink is told the end of each job once.
    void write(int job, const std::vector<ElementWrite>& elements);
    void read(int job, const std::vector<ReadBlock>& blocks);
    void transfer(const RecipeJob& recipe);

    /// Microseconds since construction, on the clock of the sink's times. From any thread.
    qint64 now() const;

private:
    using Work = std::function<void(DriverFeeder&)>;

    void run() override;
    void runUntilStopped();
    void post(Work work);
    void takeWork(DriverFeeder& feeder);
    QString stopReason();
    void exchange(DriverFeeder& feeder, Link& link);
    void send(Link& link, const ExchangeMachine::Step& step);
    void receive(DriverFeeder& feeder, Link& link);
    void look(DriverFeeder& feeder, Link& link);
    void takeWire(qint64 from, qint64 until);
    void reopenWhenSilent(const DriverFeeder& feeder);
    void runOnce(DriverFeeder& feeder);
    void pauseAfterLoss(DriverFeeder& feeder, const QString& trouble);

    // Constant after construction.
    const DriverLibrary& m_driver;
    const Settings m_settings;
    const qint64 m_startedAt = steadyTime();

    // Shared with other threads.
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_hasEnded{false};
    WakeableWait m_wait; ///< guards itself
    std::mutex m_workMutex;
    std::vector<Work> m_work; ///< guarded by m_workMutex
    QString m_stopReason;     ///< guarded by m_workMutex

    // Used by the link's thread only.
    LinkSink& m_sink;
    bool m_lossTold = false;
    GrowingPause m_pause;
    qint64 m_emptyAt = 0;   ///< a time at which the next bytes had not come; see look()
    qint64 m_lastHeard = 0; ///< time of the last byte, or of the opening
    GrowingPause m_longestSilence;
    qint64 m_reopenAfter = 0; ///< microseconds of silence
};

#endif
