#ifndef LINK_RUN_H
#define LINK_RUN_H

#include "links/cancellation.h"
#include "links/linkText.h"
#include "plan/ratedReads.h"
#include "session/linkThread.h"

/// A link to one or more stations that runs on its own thread. Give it the driver, the PLC's
/// address, the tags and a sink, and start it. It plans the requests, opens the link, polls the
/// tags, opens a lost link again, and probes silent stations instead of polling them. The
/// destructor ends it.
///
///     const DriverLibrary driver("libquorvane_ka_kb_plc.so");
///     LinkRun::Settings settings;
///     settings.address = linkAddress("tcp:192.168.0.10,502", LinkDefaults());
///     SharedValues values(tags.size(), false);   // or a sink of your own
///     LinkRun run(driver, settings, tags, values);
///     run.start();
///
/// A loaded library is one driver, so only one LinkRun may run at a time with each loaded library.
/// A program with several links loads a copy of the driver for each of them. Qt's network and
/// serial port classes need a QCoreApplication. Every thread except the link's thread may call the
/// functions. One thread, the owner's, constructs and destroys the object.
class LinkRun
{
public:
    enum Reading {
        CYCLIC,    ///< the tags are polled
        ON_REQUEST ///< the tags are read only by read()
    };

    struct Settings
    {
        LinkAddress address;          ///< of the PLC; its line settings give the silent intervals
        LinkThread::OpenLink opening; ///< opens the link; empty: the address is opened
        Reading reading = CYCLIC;
        int timeoutMs = 500; ///< longest wait for an answer, 1 or more
        int attempts = 3;    ///< a request is given up after so many attempts, 1 or more
        LinkThread::JobsAtLoss jobsAtLoss = LinkThread::JOBS_WAIT;
        int pauseMs = 500; ///< before a lost link is opened again; grows with each failure
        std::optional<int> longestPauseMs; ///< see LinkThread::Settings
        int turnaroundUs = 1000; ///< the PLC's time before it answers; only the plan uses it
        int mostGap = ANY_GAP;   ///< longest gap that a request reads, see planReads(); 0: none
        std::optional<qint64> paceMs; ///< a cycle begins so long after the cycle before, or later;
                                      ///< 0: at once; empty: defaultPaceMs()
        EchoMode echo = ECHO_UNKNOWN; ///< whether the link returns the sent bytes
        int holdMs = 2000; ///< writes wait so long for a station that fell silent, from its silence
                           ///< on; then they fail unsent. 0: they fail at once
    };

    /// @param tags  the sink names each tag by its index in here
    /// @param sink  called from the link's thread; must outlive the LinkRun
    /// @throws std::system_error when the system has no descriptor left
    LinkRun(const DriverLibrary& driver, const Settings& settings, const std::vector<Tag>& tags,
            LinkSink& sink);

    /// Stops the link as stop() does.
    ~LinkRun();
    LinkRun(const LinkRun&) = delete;
    LinkRun& operator=(const LinkRun&) = delete;

    void start();

    /// Asks the link to end, and returns: to end many links, ask them all before the first stop().
    /// Only the owner's thread calls it.
    /// @param why  the reason for the unfinished jobs, in words
    void askToStop(const QString& why);

    /// Ends the link for good: cancels an opening that is under way and waits for the thread.
    /// Before this returns, the sink has been told the ends of all jobs: unfinished jobs are lost.
    /// The ends of writes say whether the PLC can have executed them. Only the owner's thread calls
    /// it.
    /// @param why  the reason for the unfinished jobs, in words
    void stop(const QString& why);

    /// The user's jobs. The caller chooses the job numbers; each number is used once. The sink is
    /// told the end of each job once.
    void read(int job, const std::vector<ReadBlock>& blocks);
    void write(int job, const std::vector<ElementWrite>& elements);
    void transfer(const RecipeJob& recipe);

    /// The requests that read the tags, as planned: a refused request is split later.
    const std::vector<ReadBlock>& blocks() const
    {
        return m_reads.blocks;
    }

    /// The planned time from the start of a cycle of polling to the next start, in microseconds.
    qint64 cycle() const
    {
        return m_reads.cycle;
    }

    /// Whether the pace sets the time of a cycle; otherwise the line does.
    bool isPaced() const
    {
        return m_pace > 0 && m_pace >= m_reads.cycle;
    }

    /// The time of reading on the link.
    const WireCost& cost() const
    {
        return m_cost;
    }

    /// The longest planned time between two reads of a polled tag, in microseconds; empty: the tag
    /// is read once. A value that is much older has missed its turn.
    /// @param tag  index in the tags of the constructor
    std::optional<qint64> turn(size_t tag) const
    {
        return m_turns[tag];
    }

    /// Microseconds since construction, on the clock of the sink's times.
    qint64 now() const;

private:
    LinkThread::Settings threadSettings(const Settings& settings);

    const WireCost m_cost;                            ///< constant after construction
    const qint64 m_pace;                              ///< constant after construction
    const RatedReads m_reads;                         ///< constant after construction
    const std::vector<std::optional<qint64>> m_turns; ///< by tag; constant after construction
    Cancellation m_opening;                           ///< guards itself
    LinkThread m_thread;                              ///< guards itself
};

/// The pace of polling on a link, unless the user chooses one: 100 ms on a network, where a peer
/// answers tens of thousands of requests a second and a gateway would be flooded; 0 on a line,
/// which sets the pace itself.
qint64 defaultPaceMs(LinkAddress::Kind kind);

#endif
