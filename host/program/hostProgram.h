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

/// The program around one verb with a link. It starts the LinkRun, waits for the ends of the verb's
/// jobs, and records the frames for the trace and the capture.
///
/// Only the program's main thread uses it. The link's thread uses two members, as noted below.
class HostProgram
{
public:
    /// @param tags  tags of the verb
    /// @throws LinkTextError, LinkError, PcapError; VerbFailure when the user requests a stop while
    ///         the capture waits for its reader
    HostProgram(const DriverLibrary& driver, const LinkOptions& options,
                const std::vector<Tag>& tags, LinkRun::Reading reading);
    ~HostProgram();

    /// Starts the link and waits until it is open.
    /// @throws VerbFailure when it cannot be opened
    void connect();

    /// Does a verb's work. The message of a failure is printed after the trace of the frames before
    /// it.
    ExitStatus run(const std::function<ExitStatus()>& work);

    /// The news, after a wait of at most `ms` milliseconds. Also records the frames.
    News next(int ms);

    using Progress = std::function<void(int blocks)>;

    /// Waits for the end of a job, with any outcome. The outcome is LOST as soon as the link is
    /// lost, and when the user requests a stop.
    JobEnd endOf(int job, const Progress& progress = nullptr);

    /// Waits for the end of a job as endOf() does.
    /// @throws VerbFailure unless the job was done
    JobEnd await(int job, const Progress& progress = nullptr);

    /// @throws VerbFailure unless the job was done
    void mustBeDone(const JobEnd& end) const;

    /// The exit status of a verb whose job did not end as DONE.
    ExitStatus statusOf(JobEnd::Outcome outcome) const;

    /// Prints a failure, behind the trace of the frames before it.
    void tell(const QString& sentence);

    /// The link is lost for good: a simulated PLC that this program started has ended.
    bool isOver() const
    {
        return m_simulator && m_linkTrouble;
    }

    /// How this run shows times. They are on the clock of link().now().
    const TimeText& times() const
    {
        return m_times;
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
    void openCapture(qint64 startClock);
    void record(const News& news);
    void tellMissedFrames() const;

    const DriverLibrary& m_driver;
    const LinkOptions m_options;
    std::optional<SimulatedPlc> m_simulator; ///< the link's thread calls only its open()
    SharedValues m_values;                   ///< the link's thread writes to it; guards itself
    TimeText m_times;
    std::optional<FrameTrace> m_trace;
    std::optional<PcapFile> m_capture;
    std::optional<LinkRun> m_run;
    int m_lastJob = 0;
    News m_early;                         ///< news that came together with the open link
    std::optional<QString> m_linkTrouble; ///< reason of the loss, while the link is lost
    std::map<int, JobEnd> m_ends;         ///< ends that endOf() has not returned yet
    bool m_wasInterrupted = false;        ///< a stop was requested during a wait for a job
    qint64 m_framesMissed = 0;            ///< frames dropped since the start
};

/// The address of the link in the options; missing parts come from the driver's defaults.
/// @throws LinkTextError
LinkAddress addressOf(const DriverLibrary& driver, const LinkOptions& options);

#endif
