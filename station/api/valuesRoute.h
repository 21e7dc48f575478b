#ifndef VALUES_ROUTE_H
#define VALUES_ROUTE_H

#include "api/stationParts.h"

/// Adds `GET /api/v1/values?link=&tag=`: what is known of all tags, of the tags of one link, or of
/// the tags of one name, see appendValue(). 404 for a name that no link or no tag has.
void addValuesRoute(HttpRoutes& routes, const StationParts& parts);

#endif
