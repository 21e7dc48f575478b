#ifndef HEALTH_ROUTE_H
#define HEALTH_ROUTE_H

#include "api/stationParts.h"

/// Adds `GET /healthz`: {"healthy":bool,"reasons":[text]}. 200 when every link is up, every station
/// answers and the history is written; otherwise 503 with one sentence for each thing that is not
/// so.
void addHealthRoute(HttpRoutes& routes, const StationParts& parts);

#endif
