#ifndef STATION_PARTS_H
#define STATION_PARTS_H

#include "http/httpRoutes.h"
#include "machine/stationLinks.h"
#include "plant/plantStanding.h"

#include <atomic>
#include <functional>
#include <vector>

class History;
class HttpServer;

/// What the API reads and calls. The parts outlive the API.
struct StationParts
{
    QString name;                              ///< of the station
    qint64 started;                            ///< ms since 1970
    const std::atomic<bool>& areWritesAllowed; ///< a reload may change it
    StationLinks& links;
    StationEvents& events;
    const StationClock& clock;
    const DriverLibrary* addresses = nullptr; ///< checks addresses; of the HTTP thread alone
    History* history = nullptr;               ///< null: --no-history
    HttpServer* server = nullptr;             ///< its clients, its wake(); set after construction

    /// How MQTT stands, one for each dialect; null: nothing is published. Any thread calls it.
    std::function<std::vector<PlantStanding>()> plant = nullptr;
};

#endif
