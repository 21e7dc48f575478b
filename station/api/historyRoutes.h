#ifndef HISTORY_ROUTES_H
#define HISTORY_ROUTES_H

#include "api/stationParts.h"

/// Adds the history; `from` and `to` are ms since 1970, see historySpanOf():
///
/// - `GET /api/v1/history?link=&tag=&from=&to=&points=`, see historyDocument()
/// - `GET /api/v1/history.csv?link=&tag=&from=&to=`: the rows of a tag; without `tag` those of all
///   tags of the link, and without `link` those of all links
///
/// 404 for an unknown link or tag, 503 when the station keeps no history.
void addHistoryRoutes(HttpRoutes& routes, const StationParts& parts);

#endif
