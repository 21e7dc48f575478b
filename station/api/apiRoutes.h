#ifndef API_ROUTES_H
#define API_ROUTES_H

#include "api/stationParts.h"

/// Adds the requests of the API to the routes: the documents of the station and its values, the
/// writes and recipes, the history, the frames, and what monitoring asks for.
/// @param parts  outlives the routes
void addApiRoutes(HttpRoutes& routes, const StationParts& parts);

#endif
