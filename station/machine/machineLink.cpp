#include "machine/machineLink.h"

#include "links/linkText.h"
#include "session/simulatedPlcArguments.h"

#include <numeric>
#include <utility>

namespace {

/// What comes back is used again within 10 s: after the pause, with time to connect or to answer.
enum { LONGEST_PAUSE_MS = 8000 };

} // namespace

MachineLink::MachineLink(const LinkConfig& config, const LinkSurroundings& surroundings,
                         DriverCopies& copies, JobAudit& audit)
    : m_config(config),
      m_values(config.name, config.tags, surroundings.clock),
      m_jobs(m_values, audit, surroundings.clock)
{
    m_values.setJobEnded([this](const JobEnd& end) { m_jobs.jobEnded(end); },
                         [this](int job, int done) { m_jobs.recipeProgress(job, done); });
    m_values.setEvents(&surroundings.events);
    for (ValueListener* const listener : surroundings.listeners)
        m_values.addListener(listener);
    try {
        makeRun(surroundings, copies, audit);
    } catch (const LinkTextError&) {
        throw;
    } catch (const std::runtime_error& error) { // DriverError, LinkError, std::system_error
        m_trouble = QString::fromUtf8(error.what());
    }
}

MachineLink::~MachineLink()
{
    stop(QLatin1String("the station stopped"));
}

void MachineLink::makeRun(const LinkSurroundings& surroundings, DriverCopies& copies,
                          JobAudit& audit)
{
    m_driver = copies.lend();
    m_run = std::make_unique<LinkRun>(*m_driver, settings(surroundings, audit), tags(), m_values);
    notePlan();
}

/// Starts the simulated PLC, too, when the link leads to it.
LinkRun::Settings MachineLink::settings(const LinkSurroundings& surroundings, JobAudit& audit)
{
    LinkRun::Settings settings;
    settings.address = linkAddress(m_config.link, *m_driver);
    settings.timeoutMs = m_config.timeoutMs;
    settings.attempts = m_config.attempts;
    settings.pauseMs = m_config.pauseMs;
    settings.longestPauseMs = LONGEST_PAUSE_MS;
    settings.paceMs = m_config.paceMs;
    settings.jobsAtLoss = LinkThread::JOBS_END;
    if (settings.address.kind == LinkAddress::SIMULATED) {
        const LineSettings line = settings.address.line;
        m_simulator = std::make_unique<OwnSimulator>(
            surroundings.simulatorFile, simulatedPlcArguments(line, tags()),
            [this, &audit] { audit.simulatorEnded(m_config.name); });
        settings.opening = [this, line] { return m_simulator->open(line); };
    }
    return settings;
}

void MachineLink::notePlan()
{
    m_plan = m_run->blocks();
    m_cycleUs = m_run->cycle();
    m_isPaced = m_run->isPaced();
    std::vector<std::optional<qint64>> turns;
    for (size_t tag = 0; tag < tags().size(); ++tag)
        turns.push_back(m_run->turn(tag));
    m_values.setTurns(std::move(turns));
}

void MachineLink::start()
{
    if (!canRun()) {
        m_jobs.close(m_trouble);
        return tellEnd(m_trouble);
    }
    if (!m_run) return; // it was stopped
    m_jobs.open(*m_run);
    m_run->start();
    m_isRunning = true;
}

/// In place of a thread, which is not there: a tag that is read once would stay good for ever.
void MachineLink::tellEnd(const QString& why)
{
    std::vector<int> all(tags().size());
    std::iota(all.begin(), all.end(), 0);
    m_values.linkChanged(false, why, 0);
    m_values.tagsBad(all, why, 0);
}

void MachineLink::askToStop(const QString& why)
{
    m_jobs.close(why);
    if (m_run) m_run->askToStop(why);
}

/// Whoever destroys the link behind its stop finds no thread and no process left to end. A link
/// that never ran tells nothing: another may have its name.
void MachineLink::stop(const QString& why)
{
    askToStop(why);
    if (m_run) m_run->stop(why);
    m_run.reset();
    m_simulator.reset();
    if (std::exchange(m_isRunning, false)) tellEnd(why);
    m_jobs.endRest();
}

std::optional<int> MachineLink::tagNamed(const QString& name) const
{
    return m_config.tags.named(name);
}

quint64 MachineLink::write(int tag, const QByteArray& bytes, const QString& from, WriteEnded ended)
{
    return m_jobs.write(tag, bytes, from, std::move(ended));
}

quint64 MachineLink::transfer(const RecipeRequest& request, const QString& from, RecipeEnded ended)
{
    return m_jobs.transfer(request, from, std::move(ended));
}
