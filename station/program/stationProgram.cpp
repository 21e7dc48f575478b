#include "program/stationProgram.h"

#include "api/apiRoutes.h"
#include "driver/companionFiles.h"
#include "links/link.h"
#include "page/pageRoutes.h"
#include "program/stationStatus.h"

namespace {

/// @throws StationFailure
std::unique_ptr<HttpServer> listeningServer(const StationConfig& config, const HttpRoutes& routes)
{
    HttpServer::Settings settings;
    settings.address = config.listen.address;
    settings.port = config.listen.port;
    try {
        return std::make_unique<HttpServer>(settings, routes, nullptr);
    } catch (const HttpError& error) {
        throw StationFailure(STATION_ADDRESS, QString::fromUtf8(error.what()));
    }
}

} // namespace

StationProgram::StationProgram(const StationConfig& config, const QString& driverFile)
    : m_config(config),
      m_links({m_clock, m_events, {}, driverFile, companionSimulator()}),
      m_areWritesAllowed(config.allowWrites),
      m_parts{config.name, m_clock.wall(), m_areWritesAllowed, m_links, m_events, m_clock},
      m_server(listeningServer(config, m_routes))
{
    m_parts.server = m_server.get();
    addApiRoutes(m_routes, m_parts);
    addPageRoutes(m_routes);
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

QString StationProgram::url() const
{
    return pageUrl(m_config.listen.address, m_server->port());
}
