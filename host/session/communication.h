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
        ExchangeMachine::Times times;
        int attempts = 3;
        int firstPauseMs = 500;         ///< before a lost link is tried again; see GrowingPause
        bool answersOutliveLink = true; ///< late answers may come over the next link, as on a wire
        std::function<bool()> isInterrupted = [] { return false; }; ///< the program is to end now
    };

    Communication(const DriverLibrary& driver, const Settings& settings, HostBoard& board);

    /// Stops the thread; jobs under way are dropped. Where answers outlive the link, it stays until
    /// none can come any more, but for 0.2 s at most when the program is interrupted.
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
    void send(Link& link, const QByteArray& request);
    void receive(HostSession& session, Link& link);
    void awaitLateAnswers(HostSession& session, Link& link);
    void takeWire(qint64 from, qint64 until);
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
};

#endif
