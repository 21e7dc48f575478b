#include "program/stationProgram.h"

#include "api/apiRoutes.h"
#include "api/plantRoute.h"
#include "driver/companionFiles.h"
#include "page/pageRoutes.h"
#include "program/stationStatus.h"
#include "program/tokenFile.h"
#include "sparkplug/edgeNames.h"

namespace {

QByteArray tokenFor(const StationConfig& config)
{
    return config.tokenFile.isEmpty() ? QByteArray() : tokenOf(config.tokenFile);
}

/// @throws StationFailure
std::unique_ptr<HttpServer> listeningServer(const StationConfig& config, const HttpRoutes& routes,
                                            const HttpServer::Turn& turn)
{
    HttpServer::Settings settings;
    settings.address = config.listen.address;
    settings.port = config.listen.port;
    settings.token = tokenFor(config);
    settings.hostNames = config.hostNames;
    try {
        return std::make_unique<HttpServer>(settings, routes, turn);
    } catch (const HttpError& error) {
        throw StationFailure(STATION_ADDRESS, QString::fromUtf8(error.what()));
    }
}

std::optional<StateFolder> heldFolder(const StationConfig& config)
{
    if (!config.history.isKept && config.plant.servers.empty()) return std::nullopt;
    return StateFolder(stateFolderOf(config.stateFolder));
}

QString fileOf(const std::optional<StateFolder>& folder, const char* name)
{
    return folder ? folder->file(name) : QString();
}

/// Null: none is kept.
std::unique_ptr<History> keptHistory(const StationConfig& config,
                                     const std::optional<StateFolder>& folder,
                                     const StationClock& clock)
{
    if (!config.history.isKept) return nullptr;
    History::Settings settings;
    settings.file = folder->file("history.sqlite");
    settings.capBytes = config.history.capBytes;
    settings.overrideMs = config.history.overrideMs;
    return std::make_unique<History>(settings, clock);
}

/// Null: no MQTT.
std::unique_ptr<Plant> madePlant(const PlantSettings& settings,
                                 const PlantSurroundings& surroundings)
{
    if (settings.servers.empty()) return nullptr;
    return std::make_unique<Plant>(settings, surroundings);
}

/// Null: nobody wants rows, or the history makes them.
std::unique_ptr<SampleIntake> samplesWithoutHistory(const StationConfig& config,
                                                    const StationClock& clock,
                                                    const std::unique_ptr<Plant>& plant)
{
    if (config.history.isKept || !plant) return nullptr;
    return std::make_unique<SampleIntake>(config.history.overrideMs, clock, &plant->queue());
}

/// A copy of the driver for a thread of its own: the driver is made for one thread.
/// @throws StationFailure
std::unique_ptr<DriverLibrary> ownDriver(const QString& driverFile)
{
    try {
        return loadDriverCopy(driverFile);
    } catch (const DriverError& error) {
        throw StationFailure(STATION_DRIVER, QString::fromUtf8(error.what()));
    }
}

/// The keys that only a start reads, and that differ.
QStringList keysForARestart(const StationConfig& now, const StationConfig& next)
{
    QStringList keys;
    if (now.name != next.name) keys << QLatin1String("name");
    if (!(now.listen == next.listen)) keys << QLatin1String("listen");
    if (now.stateFolder != next.stateFolder) keys << QLatin1String("state");
    if (now.history.capBytes != next.history.capBytes) keys << QLatin1String("history.cap");
    if (now.history.overrideMs != next.history.overrideMs)
        keys << QLatin1String("history.override");
    if (!(now.plant == next.plant)) keys << QLatin1String("mqtt");
    return keys;
}

/// The plant is the one of the start, whatever a new configuration says of it.
/// @throws StationFailure
void checkMetricNames(const PlantSettings& plant, const std::vector<LinkConfig>& links)
{
    if (plant.servers.empty() || !plant.speaksSparkplug) return;
    const QStringList problems = metricNameProblems(plantDevices(links));
    if (problems.isEmpty()) return;
    throw StationFailure(STATION_USAGE, problems.join(QLatin1Char('\n')));
}

} // namespace

StationProgram::StationProgram(const StationConfig& config, const QString& driverFile)
    : m_config(config),
      m_state(heldFolder(config)),
      m_events([this] { wakeServer(); }),
      m_areWritesAllowed(config.allowWrites),
      m_streams(streamSources(), [this] { wakeServer(); }),
      m_addresses(ownDriver(driverFile)),
      m_plant(madePlant(config.plant,
                        {m_clock, m_links, m_areWritesAllowed, fileOf(m_state, "mqtt-sequence"),
                         fileOf(m_state, "mqtt-cursor"), fileOf(m_state, "mqtt-topics"),
                         [this] { m_streams.plantChanged(); }})),
      m_history(keptHistory(config, m_state, m_clock)),
      m_samples(samplesWithoutHistory(config, m_clock, m_plant)),
      m_links({m_clock, m_events, listeners(), driverFile, companionSimulator()}),
      m_parts{config.name, m_clock.wall(), m_areWritesAllowed, m_links,
              m_events,    m_clock,        m_addresses.get()},
      m_server(
          listeningServer(config, m_routes, [this](qint64 now) { return m_streams.turn(now); }))
{
    m_parts.history = m_history.get();
    m_parts.server = m_server.get();
    addApiRoutes(m_routes, m_parts);
    addPageRoutes(m_routes);
    m_streams.addRoute(m_routes);
    if (m_plant) m_parts.plant = [this] { return m_plant->standings(); };
    if (m_plant) m_plant->setDevices(plantDevices(config.links));
    if (m_plant && m_history) m_history->setRowListener(&m_plant->queue());
    applyLinks(config.links);
    if (m_history) m_history->start([this] { return linkValues(); });
    if (m_samples) m_samples->start([this] { return linkValues(); });
    m_server->start();
    if (m_plant) m_plant->start(m_history.get());
}

StationProgram::~StationProgram()
{
    if (m_history) m_history->stop();
    m_links.stop(QLatin1String("the station stopped"));
    if (m_plant) m_plant->stop();
}

QString StationProgram::url() const
{
    return pageUrl(m_config.listen.address, m_server->port());
}

void StationProgram::applyLinks(const std::vector<LinkConfig>& links)
{
    try {
        m_links.apply(links);
    } catch (const std::exception& error) { // a driver or a simulated PLC that does not start
        throw StationFailure(STATION_DRIVER, QString::fromUtf8(error.what()));
    }
}

/// The devices of new links are known before their first samples come.
void StationProgram::applyChangedLinks(const std::vector<LinkConfig>& links)
{
    if (!m_plant) return applyLinks(links);
    m_plant->setDevices(plantDevices(links));
    try {
        applyLinks(links);
    } catch (...) { // nothing has changed
        m_plant->setDevices(plantDevices(m_config.links));
        throw;
    }
}

/// The station goes on listening on the address of its start, whatever the configuration says now.
QStringList StationProgram::reload(const StationConfig& config)
{
    const QByteArray token = tokenFor(config);
    if (token.isEmpty() && !m_config.listen.isLoopback())
        throw StationFailure(STATION_USAGE,
                             QLatin1String("other machines can reach the present address: the "
                                           "token file can go only with a restart"));
    checkMetricNames(m_config.plant, config.links);
    applyChangedLinks(config.links);
    m_server->setAccess(token, config.hostNames);
    m_areWritesAllowed = config.allowWrites;
    const QStringList keys = keysForARestart(m_config, config);
    m_config.links = config.links;
    return keys;
}

std::vector<ValueListener*> StationProgram::listeners()
{
    std::vector<ValueListener*> all = {&m_streams};
    if (m_history) all.push_back(m_history.get());
    if (m_samples) all.push_back(m_samples.get());
    if (m_plant) all.push_back(&m_plant->queue());
    return all;
}

HistoryIntake::Links StationProgram::linkValues() const
{
    HistoryIntake::Links values;
    for (const std::shared_ptr<MachineLink>& link : m_links.all())
        values.emplace_back(link, &link->values());
    return values;
}

EventStreams::Sources StationProgram::streamSources()
{
    const auto links = [this] {
        std::vector<StreamedLink> streamed;
        for (const std::shared_ptr<MachineLink>& link : m_links.all())
            streamed.push_back({{link, &link->values()}, {link, &link->frames()}});
        return streamed;
    };
    const auto plant = [this] { return plantDocument(m_plant->standings()); };
    EventStreams::Sources sources = {links, [this] { return m_areWritesAllowed.load(); }, m_events,
                                     m_clock};
    if (!m_config.plant.servers.empty()) sources.plant = plant;
    return sources;
}

/// No link runs, and no client is there, before there is a server.
void StationProgram::wakeServer()
{
    m_server->wake();
}
