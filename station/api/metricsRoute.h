#ifndef METRICS_ROUTE_H
#define METRICS_ROUTE_H

#include "api/stationParts.h"

/// Adds `GET /metrics`: the figures of the station and of its links for monitoring, as OpenMetrics
/// text. See docs/station.md for the metrics.
void addMetricsRoute(HttpRoutes& routes, const StationParts& parts);

#endif
