#ifndef LIVE_HOST_H
#define LIVE_HOST_H

#include "links/cancellation.h"
#include "links/linkText.h"
#include "links/simulatedPlc.h"
#include "output/frameTrace.h"
#include "output/pcapFile.h"
#include "session/communication.h"
#include "verbs/exitStatus.h"

#include <functional>
#include <map>
#include <optional>

/// What every verb with a link is told.
struct LinkOptions
{
    std::string link = "sim";
    std::string simulator; ///< program; empty: the one beside this one
    std::string simulatorArguments;
    int timeoutMs = 500;
    int attempts = 3;
    int pauseMs = 500;
    int turnaroundUs = 1000;
    EchoMode echo = ECHO_UNKNOWN;
    bool trace = false;
    std::string pcap;
    bool json = false;
};

/// The host of one verb: driver, link, communication thread and what is recorded of it.
class LiveHost
{
public:
    /// @param tags      those that the verb knows
    /// @param cyclic    they are polled; else they are read when asked for
    /// Throws LinkTextError, LinkError, PcapError.
    LiveHost(const DriverLibrary& driver, const LinkOptions& options, const std::vector<Tag>& tags,
             bool cyclic);
    ~LiveHost();

    /// Starts the communication and waits until the link is open.
    /// Throws VerbFailure when it cannot be opened.
    void connect();

    /// Does a verb's work, and tells its failure behind the trace of what led to it.
    ExitStatus run(const std::function<ExitStatus()>& work);

    /// What happened, after a wait of `ms` at most. Frames are recorded on the way.
    News next(int ms);

    using Progress = std::function<void(int blocks)>;

    /// Waits for the end of a job, however it is: LOST as soon as the link is, and when the user
    /// wants to stop.
    JobEnd endOf(int job, const Progress& progress = nullptr);

    /// The same, and throws VerbFailure unless it was done.
    JobEnd await(int job, const Progress& progress = nullptr);

    /// Throws VerbFailure unless the job was done.
    void mustBeDone(const JobEnd& end) const;

    /// The link is lost, and for good: a simulated PLC of the host's own does not come back.
    bool isOver() const
    {
        return m_simulator && m_linkTrouble;
    }

    Communication& communication()
    {
        return *m_communication;
    }
    const HostBoard& board() const
    {
        return m_board;
    }
    const std::vector<ReadBlock>& blocks() const
    {
        return m_blocks;
    }
    int newJob()
    {
        return ++m_lastJob;
    }

private:
    Communication::Settings settings(const std::vector<Tag>& tags);
    Communication::OpenLink opener(const std::vector<Tag>& tags);
    void record(const News& news);
    void tellMissedFrames() const;
    ExitStatus statusOf(JobEnd::Outcome outcome) const;

    const DriverLibrary& m_driver;
    const LinkOptions m_options;
    LinkAddress m_address;
    std::optional<SimulatedPlc> m_simulator;
    std::vector<ReadBlock> m_blocks;
    HostBoard m_board;
    std::optional<FrameTrace> m_trace;
    std::optional<PcapFile> m_capture;
    Cancellation m_opening; ///< of the link, which the communication thread waits for
    std::optional<Communication> m_communication;
    int m_lastJob = 0;
    News m_early;                         ///< what came with the news of the open link
    std::optional<QString> m_linkTrouble; ///< while the link is lost
    std::map<int, JobEnd> m_ends;         ///< of jobs that nobody has asked for yet
    bool m_wasInterrupted = false;        ///< while a job was waited for
    qint64 m_framesMissed = 0;            ///< since the start
};

/// The link that the options name, on top of the driver's own defaults. Throws LinkTextError.
LinkAddress addressOf(const DriverLibrary& driver, const LinkOptions& options);

/// The line's timing; a network has none.
LineTiming timingOf(const LinkAddress& address);

#endif
