#ifndef COMMUNICATION_H
#define COMMUNICATION_H

#include "driver/driverLibrary.h"
#include "links/link.h"
#include "links/wakeableWait.h"
#include "session/growingPause.h"
#include "session/hostBoard.h"
#include "session/hostSession.h"

#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

/// The communication thread: it owns the link, makes all driver calls, and keeps the line going
/// whatever the user's side does. Jobs go in here, what came of them is on the board.
///
/// A lost link is told once and tried again with growing pauses; the jobs wait for it.
class Communication : private QThread
{
public:
    using OpenLink = std::function<std::unique_ptr<Link>()>; ///< throws LinkError

    struct Settings
    {
        OpenLink openLink; ///< called in the communication thread
        LineTiming timing = LineTiming(LineSettings());
        ExchangeMachine::Settings exchange;
        int attempts = 3;
        int firstPauseMs = 500;         ///< before a lost link is tried again; see GrowingPause
        bool reopensWhenSilent = false; ///< when no station answers and nothing comes any more
    };

    Communication(const DriverLibrary& driver, const Settings& settings, HostBoard& board);

    /// Stops the thread; jobs under way are dropped.
    ~Communication() override;

    /// Polls the tags; or only knows them, so that reading their blocks once shows their values.
    /// One of the two, before start().
    void poll(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks);
    void know(const std::vector<Tag>& tags, const std::vector<ReadBlock>& blocks);

    void start();

    /// Jobs, from any thread. Their end comes to the board once.
    void write(int job, const std::vector<ElementWrite>& elements);
    void readOnce(int job, const std::vector<ReadBlock>& blocks);
    void transfer(const RecipeJob& recipe);

    /// Microseconds since this was made; the time that the board speaks of.
    qint64 now() const;

private:
    using Work = std::function<void(HostSession&)>;

    void run() override;
    void runUntilStopped();
    void post(Work work);
    void takeWork(HostSession& session);
    void exchange(HostSession& session, Link& link);
    void send(Link& link, const ExchangeMachine::Step& step);
    void receive(HostSession& session, Link& link);
    void takeWire(qint64 from, qint64 until);
    void reopenWhenSilent(const HostSession& session);
    void runOnce(HostSession& session);
    void pauseAfterLoss(HostSession& session);

    const DriverLibrary& m_driver;
    const Settings m_settings;
    HostBoard& m_board;
    QElapsedTimer m_clock;
    WakeableWait m_wait;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_hasEnded{false};
    std::mutex m_workMutex;
    std::vector<Work> m_work;
    bool m_lossTold = false;
    GrowingPause m_pause;
    qint64 m_lastHeard = 0; ///< when bytes came, or the link was opened
    GrowingPause m_longestSilence;
    qint64 m_reopenAfter = 0; ///< of silence
};

#endif
