#ifndef STATION_PROGRAM_H
#define STATION_PROGRAM_H

#include "api/stationParts.h"
#include "events/eventStreams.h"
#include "history/history.h"
#include "history/sampleIntake.h"
#include "http/httpServer.h"
#include "plant/plant.h"
#include "program/stateFolder.h"
#include "program/stationConfig.h"

/// The parts of a running station, and how they hang together:
///
///     links' threads -- news --> History, EventStreams, StationEvents -- wake --> HttpServer
///     HttpServer's thread -- requests --> API --> StationLinks, History
///     links' threads, History's thread -- rows --> Plant's thread --> brokers
///
/// The history ends its run first, so that the end of the links is no row in it. Then the links
/// stop, then MQTT, then the server: nobody wakes a server that is gone, a write that waits is
/// answered, and the last values are kept and published.
///
/// The main thread uses it.
class StationProgram
{
public:
    /// @throws StationFailure
    StationProgram(const StationConfig& config, const QString& driverFile);
    ~StationProgram();
    StationProgram(const StationProgram&) = delete;
    StationProgram& operator=(const StationProgram&) = delete;

    /// The address of the page.
    QString url() const;

    /// Goes on with another configuration. Links that did not change miss no poll.
    /// @return the keys whose new values only a restart makes true
    /// @throws StationFailure; then nothing has changed
    QStringList reload(const StationConfig& config);

private:
    void applyLinks(const std::vector<LinkConfig>& links);
    void applyChangedLinks(const std::vector<LinkConfig>& links);
    std::vector<ValueListener*> listeners();
    HistoryIntake::Links linkValues() const;
    EventStreams::Sources streamSources();
    void wakeServer();

    StationConfig m_config;
    std::optional<StateFolder> m_state; ///< empty: no history is kept, and nothing is published
    const SystemClock m_clock;
    StationEvents m_events; ///< guards itself
    std::atomic<bool> m_areWritesAllowed;
    EventStreams m_streams;                                 ///< of the server's thread
    const std::unique_ptr<const DriverLibrary> m_addresses; ///< of the server's thread
    const std::unique_ptr<Plant> m_plant;                   ///< null: no MQTT; guards itself
    const std::unique_ptr<History> m_history;               ///< null: none is kept; guards itself
    const std::unique_ptr<SampleIntake> m_samples; ///< of MQTT without a history; guards itself
    StationLinks m_links;                          ///< guards itself
    StationParts m_parts;                          ///< constant once the server has started
    HttpRoutes m_routes;                           ///< constant once the server has started
    const std::unique_ptr<HttpServer> m_server;    ///< goes before all that its requests use
};

#endif
