#ifndef STATION_ROUTE_H
#define STATION_ROUTE_H

#include "api/stationParts.h"

/// Adds `GET /api/v1/station`: the station, and the state and the figures of each link.
///
///     {"name","version","started","writes":bool,"links":[
///       {"name","link","state":"up"|"lost"|"opening","since","trouble","exchanges","retries",
///        "giveUps","refused","losses","replyP50","replyP99","wire",
///        "stations":[{"station","state":"answers"|"silent","since","trouble"}]}]}
///
/// `trouble` says in words why a link is lost, and why a station is silent; else it is null.
/// Counts are those since the link's start. The reply times, in ms, and `wire`, the share of the
/// time in which the wire was taken, are those of the last ten seconds; each is null when there is
/// none: no reply came, or a network, which has no wire of its own.
void addStationRoute(HttpRoutes& routes, const StationParts& parts);

#endif
