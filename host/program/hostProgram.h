#ifndef HOST_PROGRAM_H
#define HOST_PROGRAM_H

#include "links/linkText.h"
#include "links/simulatedPlc.h"
#include "output/frameTrace.h"
#include "output/pcapFile.h"
#include "program/exitStatus.h"
#include "program/linkOptions.h"
#include "session/linkRun.h"
#include "session/sharedValues.h"

#include <functional>
#include <map>
#include <optional>

/// The program around one verb with a link: it starts the link's run, hands in the verb's jobs,
/// waits for their ends, and records the frames. Used by the program's main thread only; values()
/// guards itself.
class HostProgram
{
public:
    /// @param tags  the tags that the verb knows
    /// Throws LinkTextError, LinkError, PcapError.
    HostProgram(const DriverLibrary& driver, const LinkOptions& options,
                const std::vector<Tag>& tags, LinkRun::Reading reading);
    ~HostProgram();

    /// Starts the link and waits until the link is open.
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

    LinkRun& link()
    {
        return *m_run;
    }
    const SharedValues& values() const
    {
        return m_values;
    }
    const std::vector<ReadBlock>& blocks() const
    {
        return m_run->blocks();
    }
    int newJob()
    {
        return ++m_lastJob;
    }

private:
    LinkRun::Settings settings(const std::vector<Tag>& tags, LinkRun::Reading reading);
    void record(const News& news);
    void tellMissedFrames() const;
    ExitStatus statusOf(JobEnd::Outcome outcome) const;

    const DriverLibrary& m_driver;
    const LinkOptions m_options;
    std::optional<SimulatedPlc> m_simulator;
    SharedValues m_values;
    std::optional<FrameTrace> m_trace;
    std::optional<PcapFile> m_capture;
    std::optional<LinkRun> m_run;
    int m_lastJob = 0;
    News m_early;                         ///< what came with the news of the open link
    std::optional<QString> m_linkTrouble; ///< while the link is lost
    std::map<int, JobEnd> m_ends;         ///< of jobs that nobody has asked for yet
    bool m_wasInterrupted = false;        ///< while a job was waited for
    qint64 m_framesMissed = 0;            ///< since the start
};

/// The link that the options name, on top of the driver's own defaults. Throws LinkTextError.
LinkAddress addressOf(const DriverLibrary& driver, const LinkOptions& options);

#endif
