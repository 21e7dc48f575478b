#ifndef STATION_PROGRAM_H
#define STATION_PROGRAM_H

#include "api/stationParts.h"
#include "events/eventStreams.h"
#include "http/httpServer.h"
#include "program/stationConfig.h"

/// The parts of a running station, and how they hang together.
///
/// The main thread uses it.
class StationProgram
{
public:
    /// @throws StationFailure
    StationProgram(const StationConfig& config, const QString& driverFile);
    ~StationProgram();

    /// The address of the page.
    QString url() const;

private:
    EventStreams::Sources streamSources();
    void wakeServer();

    const StationConfig m_config;
    SystemClock m_clock;
    StationEvents m_events;
    std::atomic<bool> m_areWritesAllowed;
    EventStreams m_streams;
    StationLinks m_links;
    StationParts m_parts;
    HttpRoutes m_routes;                        ///< constant once the server has started
    const std::unique_ptr<HttpServer> m_server; ///< goes before all that its requests use
};

#endif
