#ifndef LINK_THREAD_H
#define LINK_THREAD_H

#include "driver/driverLibrary.h"
#include "links/link.h"
#include "links/wakeableWait.h"
#include "session/driverFeeder.h"
#include "session/growingPause.h"
#include "session/linkSink.h"

#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

/// The thread of one link. It owns the link, makes all driver calls, and keeps the line going
/// whatever the owner's side does. Jobs go in here; the sink is told their ends.
///
/// A lost link is told once and tried again with growing pauses; the jobs wait for it.
class LinkThread : private QThread
{
public:
    using OpenLink = std::function<std::unique_ptr<Link>()>; ///< throws LinkError

    struct Settings
    {
        OpenLink openLink; ///< called in the link's thread
        LineTiming timing = LineTiming(LineSettings());
        ExchangeMachine::Settings exchange;
        int attempts = 3;
        int firstPauseMs = 500;         ///< before a lost link is tried again; see GrowingPause
        bool reopensWhenSilent = false; ///< when no station answers and nothing comes any more
    };

    LinkThread(const DriverLibrary& driver, const Settings& settings, LinkSink& sink);

    /// Stops the thread; jobs under way are dropped.
    ~LinkThread() override;

    /// Polls the tags; or only knows them, so that reading their blocks once shows their values.
    /// One of the two, before start().
    void poll(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks);
    void know(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks);

    void start();

    /// Jobs, from any thread. The sink is told the end of each once.
    void write(int job, const std::vector<ElementWrite>& elements);
    void read(int job, const std::vector<ReadBlock>& blocks);
    void transfer(const RecipeJob& recipe);

    /// Microseconds since construction: the time that the sink is told. From any thread.
    qint64 now() const;

private:
    using Work = std::function<void(DriverFeeder&)>;

    void run() override;
    void runUntilStopped();
    void post(Work work);
    void takeWork(DriverFeeder& feeder);
    void exchange(DriverFeeder& feeder, Link& link);
    void send(Link& link, const ExchangeMachine::Step& step);
    void receive(DriverFeeder& feeder, Link& link);
    void takeWire(qint64 from, qint64 until);
    void reopenWhenSilent(const DriverFeeder& feeder);
    void runOnce(DriverFeeder& feeder);
    void pauseAfterLoss(DriverFeeder& feeder);

    // Constant after construction.
    const DriverLibrary& m_driver;
    const Settings m_settings;
    QElapsedTimer m_clock;

    // Shared with other threads.
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_hasEnded{false};
    WakeableWait m_wait; ///< guards itself
    std::mutex m_workMutex;
    std::vector<Work> m_work; ///< guarded by m_workMutex

    // Used by the link's thread only.
    LinkSink& m_sink;
    bool m_lossTold = false;
    GrowingPause m_pause;
    qint64 m_lastHeard = 0; ///< when bytes came, or the link was opened
    GrowingPause m_longestSilence;
    qint64 m_reopenAfter = 0; ///< of silence
};

#endif
