#include "program/stationProgram.h"

#include "api/apiRoutes.h"
#include "driver/companionFiles.h"
#include "links/link.h"
#include "page/pageRoutes.h"
#include "program/stationStatus.h"

namespace {

/// @throws StationFailure
std::unique_ptr<HttpServer> listeningServer(const StationConfig& config, const HttpRoutes& routes,
                                            HttpServer::Turn turn)
{
    HttpServer::Settings settings;
    settings.address = config.listen.address;
    settings.port = config.listen.port;
    try {
        return std::make_unique<HttpServer>(settings, routes, std::move(turn));
    } catch (const HttpError& error) {
        throw StationFailure(STATION_ADDRESS, QString::fromUtf8(error.what()));
    }
}

} // namespace

StationProgram::StationProgram(const StationConfig& config, const QString& driverFile)
    : m_config(config),
      m_events([this] { wakeServer(); }),
      m_areWritesAllowed(config.allowWrites),
      m_streams(streamSources(), [this] { wakeServer(); }),
      m_links({m_clock, m_events, {&m_streams}, driverFile, companionSimulator()}),
      m_parts{config.name, m_clock.wall(), m_areWritesAllowed, m_links, m_events, m_clock},
      m_server(
          listeningServer(config, m_routes, [this](qint64 now) { return m_streams.turn(now); }))
{
    m_parts.server = m_server.get();
    addApiRoutes(m_routes, m_parts);
    addPageRoutes(m_routes);
    m_streams.addRoute(m_routes);
    try {
        m_links.apply(config.links);
    } catch (const DriverError& error) {
        throw StationFailure(STATION_DRIVER, QString::fromUtf8(error.what()));
    } catch (const std::exception& error) {
        throw StationFailure(STATION_CONFIGURATION, QString::fromUtf8(error.what()));
    }
    m_server->start();
}

StationProgram::~StationProgram()
{
    m_links.stop(QLatin1String("the station stopped"));
}

EventStreams::Sources StationProgram::streamSources()
{
    const auto links = [this] {
        std::vector<StreamedLink> streamed;
        for (const std::shared_ptr<MachineLink>& link : m_links.all())
            streamed.push_back({{link, &link->values()}, {link, &link->frames()}});
        return streamed;
    };
    return {links, [this] { return m_areWritesAllowed.load(); }, m_events, m_clock};
}

/// No link runs, and no client is there, before there is a server.
void StationProgram::wakeServer()
{
    m_server->wake();
}

QString StationProgram::url() const
{
    return pageUrl(m_config.listen.address, m_server->port());
}
