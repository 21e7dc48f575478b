#include "machine/machineLink.h"

#include "links/linkText.h"
#include "plan/recipePlan.h"
#include "session/startedDriver.h"

#include <set>

namespace {

/// Arguments that make the simulated PLC serve the stations of the tags at the speed of the line.
QStringList simulatorArguments(const LineSettings& line, const std::vector<Tag>& tags)
{
    std::set<int> stations;
    for (const Tag& tag : tags)
        stations.insert(tag.station);
    QStringList arguments;
    for (const int station : stations)
        arguments << QLatin1String("--station") << QString::number(station);
    arguments << QLatin1String("--demo-signals") << QLatin1String("--baud")
              << QString::number(line.baud);
    return arguments;
}

} // namespace

MachineLink::MachineLink(const LinkConfig& config, const LinkSurroundings& surroundings)
    : m_config(config),
      m_surroundings(surroundings),
      m_driver(loadDriverCopy(surroundings.driverFile)),
      m_values(config.name, config.tags, surroundings.clock)
{
    LinkRun::Settings settings;
    settings.address = linkAddress(config.link, *m_driver);
    settings.timeoutMs = config.timeoutMs;
    settings.attempts = config.attempts;
    settings.pauseMs = config.pauseMs;
    settings.paceMs = config.paceMs;
    if (settings.address.kind == LinkAddress::SIMULATED) {
        const LineSettings line = settings.address.line;
        m_simulator = std::make_unique<SimulatedPlc>(surroundings.simulatorFile,
                                                     simulatorArguments(line, config.tags));
        settings.opening = [this, line] { return m_simulator->open(line); };
    }
    m_run = std::make_unique<LinkRun>(*m_driver, settings, config.tags, m_values);
    m_plan = m_run->blocks();
    std::vector<std::optional<qint64>> turns;
    for (size_t tag = 0; tag < config.tags.size(); ++tag)
        turns.push_back(m_run->turn(tag));
    m_values.setTurns(std::move(turns));
    m_values.setJobEnded([this](const JobEnd& end) { jobEnded(end); }, nullptr);
    for (ValueListener* const listener : surroundings.listeners)
        m_values.addListener(listener);
}

MachineLink::~MachineLink()
{
    stop(QLatin1String("the station stopped"));
}

void MachineLink::start()
{
    m_run->start();
}

void MachineLink::stop(const QString& why)
{
    std::unique_ptr<LinkRun> run;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::swap(run, m_run);
    }
    if (run) run->stop(why);
}

std::optional<int> MachineLink::tagNamed(const QString& name) const
{
    for (size_t tag = 0; tag < m_config.tags.size(); ++tag) {
        if (m_config.tags[tag].name == name) return int(tag);
    }
    return {};
}

quint64 MachineLink::write(int tag, const QByteArray& bytes, const QString&, WriteEnded ended)
{
    const Tag& written = tags()[size_t(tag)];
    const std::lock_guard<std::mutex> lock(m_mutex);
    const int job = ++m_lastJob;
    m_writes[job] = {quint64(job), tag, std::move(ended)};
    if (!m_run) return quint64(job);
    if (written.units() == 1) {
        ElementWrite element;
        element.station = written.station;
        element.area = written.area;
        element.number = written.number;
        element.bytes = bytes;
        element.label = written.name;
        m_run->write(job, {element});
        return quint64(job);
    }
    const RecipePlan plan({written}, StartedDriver::LINK_NUMBER);
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_DOWNLOAD_FLAG;
    recipe.records = plan.downloadRecords();
    recipe.values = plan.buffer({bytes});
    m_run->transfer(recipe);
    return quint64(job);
}

void MachineLink::jobEnded(const JobEnd& end)
{
    Write write;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_writes.find(end.job);
        if (found == m_writes.end()) return;
        write = std::move(found->second);
        m_writes.erase(found);
    }
    WriteEnd result;
    result.id = write.id;
    result.outcome = end.outcome == JobEnd::DONE      ? WriteEnd::CONFIRMED
                     : end.outcome == JobEnd::REFUSED ? WriteEnd::REFUSED
                                                      : WriteEnd::FAILED;
    result.reason = end.reason;
    result.held = m_values.reading(write.tag);
    write.ended(result);
}

quint64 MachineLink::transfer(const RecipeRequest&, const QString&, RecipeEnded ended)
{
    RecipeEnd end;
    end.reason = QLatin1String("not built yet");
    ended(end);
    return 0;
}
