#ifndef MACHINE_LINK_H
#define MACHINE_LINK_H

#include "machine/driverCopy.h"
#include "machine/linkConfig.h"
#include "machine/linkJobs.h"
#include "machine/ownSimulator.h"

#include <memory>

/// What every link of the station uses.
struct LinkSurroundings
{
    const StationClock& clock;
    StationEvents& events;
    std::vector<ValueListener*> listeners;
    QString driverFile;    ///< of which each link loads a copy
    QString simulatorFile; ///< of the simulated PLC
};

/// One link of the station: its driver, its thread, its values and its jobs. It stays alive, with
/// its last values, for whoever still reads it after its stop; none of them is good then.
///
/// A link that the system cannot serve, because it has no memory for a driver or no program for the
/// simulated PLC, is there all the same: it is lost, and says why.
///
/// The main thread constructs, starts and stops it. Any thread calls the other functions, and
/// destroys it behind its stop.
class MachineLink
{
public:
    /// @param copies  of surroundings.driverFile
    /// @param audit   must outlive the link's run
    /// @throws LinkTextError
    MachineLink(const LinkConfig& config, const LinkSurroundings& surroundings,
                DriverCopies& copies, JobAudit& audit);
    ~MachineLink();

    void start();

    /// Asks the link to end, and returns: to end many links, ask them all before the first stop().
    /// @param why  the reason for the unfinished jobs, in words
    void askToStop(const QString& why);

    /// Ends the link for good. All its values are bad, and the ends of all jobs are told, before it
    /// returns.
    /// @param why  the reason for the unfinished jobs and the bad values, in words
    void stop(const QString& why);

    /// False: the system could not serve it, see above.
    bool canRun() const
    {
        return m_trouble.isEmpty();
    }

    const LinkConfig& config() const
    {
        return m_config;
    }
    const QString& name() const
    {
        return m_config.name;
    }
    const std::vector<Tag>& tags() const
    {
        return m_config.tags.all();
    }
    const LinkValues& values() const
    {
        return m_values;
    }
    void keepFrames(size_t most)
    {
        m_values.keepFrames(most);
    }
    const FrameLog& frames() const
    {
        return m_values.frames();
    }

    /// The requests that read the tags, as planned.
    const std::vector<ReadBlock>& plan() const
    {
        return m_plan;
    }

    /// The planned time from the start of a cycle to the next start, in microseconds.
    qint64 cycleUs() const
    {
        return m_cycleUs;
    }

    /// Whether the pace bounds the cycle; otherwise the line does.
    bool isPaced() const
    {
        return m_isPaced;
    }

    /// The index of a tag; empty: the link has no such tag.
    std::optional<int> tagNamed(const QString& name) const;

    /// Writes a tag. A newer write of the tag replaces one that was not sent yet. While the link is
    /// not up, a write fails at once.
    /// @param bytes  in the format of intf_setData; the caller has checked them and the access
    /// @param from   who asked for it, for the audit: "127.0.0.1:50000"
    /// @param ended  may be called before this returns
    /// @return the write's id
    quint64 write(int tag, const QByteArray& bytes, const QString& from, WriteEnded ended);

    /// Transfers a recipe. Recipes of a link go one behind the other. A recipe with rows that
    /// cannot be transferred, see recipeProblem() and RecipePlan, fails unsent.
    /// @param request  the addresses of its rows exist
    /// @param ended    may be called before this returns
    /// @return the recipe's id
    quint64 transfer(const RecipeRequest& request, const QString& from, RecipeEnded ended);

private:
    LinkRun::Settings settings(const LinkSurroundings& surroundings, JobAudit& audit);
    void makeRun(const LinkSurroundings& surroundings, DriverCopies& copies, JobAudit& audit);
    void notePlan();
    void tellEnd(const QString& why);

    const LinkConfig m_config;
    LinkValues m_values; ///< guards itself
    LinkJobs m_jobs;     ///< guards itself

    // Constant after construction.
    std::shared_ptr<const DriverLibrary> m_driver;
    QString m_trouble; ///< why there is no run
    std::vector<ReadBlock> m_plan;
    qint64 m_cycleUs = 0;
    bool m_isPaced = false;

    // Used by the main thread only; empty behind stop().
    std::unique_ptr<OwnSimulator> m_simulator; ///< the link's thread calls only its open()
    std::unique_ptr<LinkRun> m_run;            ///< jobs reach it through m_jobs
    bool m_isRunning = false;                  ///< between start() and stop()
};

#endif
