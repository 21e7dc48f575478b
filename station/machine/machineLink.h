#ifndef MACHINE_LINK_H
#define MACHINE_LINK_H

#include "links/simulatedPlc.h"
#include "machine/driverCopy.h"
#include "machine/linkConfig.h"
#include "machine/recipeJob.h"
#include "machine/writeEnd.h"
#include "session/linkRun.h"
#include "values/frameLog.h"
#include "values/linkValues.h"
#include "values/stationEvents.h"

#include <map>
#include <memory>
#include <mutex>

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
/// its last values, for whoever still reads it after its stop.
///
/// The main thread constructs, starts and stops it. Any thread calls the other functions.
class MachineLink
{
public:
    /// @throws DriverError, LinkTextError, LinkError
    MachineLink(const LinkConfig& config, const LinkSurroundings& surroundings);
    ~MachineLink();

    void start();

    /// Ends the link for good. The ends of all jobs are told before it returns.
    /// @param why  the reason for the unfinished jobs, in words
    void stop(const QString& why);

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
        return m_config.tags;
    }
    const LinkValues& values() const
    {
        return m_values;
    }
    const FrameLog& frames() const
    {
        return m_frames;
    }

    /// The requests that read the tags, as planned.
    const std::vector<ReadBlock>& plan() const
    {
        return m_plan;
    }

    /// The index of a tag; empty: the link has no such tag.
    std::optional<int> tagNamed(const QString& name) const;

    /// Writes a tag.
    /// @param bytes  in the format of intf_setData; the caller has checked them and the access
    /// @param from   who asked for it, for the audit: "127.0.0.1:50000"
    /// @return the write's id
    quint64 write(int tag, const QByteArray& bytes, const QString& from, WriteEnded ended);

    /// Transfers a recipe.
    /// @return the recipe's id
    quint64 transfer(const RecipeRequest& request, const QString& from, RecipeEnded ended);

private:
    struct Write
    {
        quint64 id;
        int tag;
        WriteEnded ended;
    };

    void jobEnded(const JobEnd& end);

    const LinkConfig m_config;
    const LinkSurroundings m_surroundings;
    const std::unique_ptr<DriverLibrary> m_driver;
    LinkValues m_values;                       ///< guards itself
    FrameLog m_frames;                         ///< guards itself
    std::vector<ReadBlock> m_plan;             ///< constant after construction
    std::unique_ptr<SimulatedPlc> m_simulator; ///< the link's thread calls only its open()

    mutable std::mutex m_mutex;     ///< guards all members below
    std::unique_ptr<LinkRun> m_run; ///< empty after stop()
    std::map<int, Write> m_writes;  ///< by job
    int m_lastJob = 0;
};

#endif
