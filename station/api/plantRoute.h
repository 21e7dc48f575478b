#ifndef PLANT_ROUTE_H
#define PLANT_ROUTE_H

#include "api/stationParts.h"

/// GET /api/v1/plant: how the station stands with its broker, one object for each dialect; empty
/// without MQTT.
///     [{"dialect","state","server","since","trouble","behind","dropped","sessions","sent",
///       "historical","commands","refusedCommands"}]
/// `state` is "connected", "connecting" or "pausing"; `trouble` is null unless there is a reason.
/// `behind` and `dropped` are null for the dialect json.
QByteArray plantDocument(const std::vector<PlantStanding>& standings);

void addPlantRoute(HttpRoutes& routes, const StationParts& parts);

#endif
