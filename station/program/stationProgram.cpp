#include "program/stationProgram.h"

#include "driver/companionFiles.h"
#include "links/link.h"
#include "program/stationStatus.h"

StationProgram::StationProgram(const StationConfig& config, const QString& driverFile)
    : m_config(config), m_links({m_clock, m_events, {}, driverFile, companionSimulator()})
{
    try {
        m_links.apply(config.links);
    } catch (const DriverError& error) {
        throw StationFailure(STATION_DRIVER, QString::fromUtf8(error.what()));
    } catch (const std::exception& error) {
        throw StationFailure(STATION_CONFIGURATION, QString::fromUtf8(error.what()));
    }
}

StationProgram::~StationProgram()
{
    m_links.stop(QLatin1String("the station stopped"));
}

QString StationProgram::url() const
{
    return pageUrl(m_config.listen.address, m_config.listen.port);
}
