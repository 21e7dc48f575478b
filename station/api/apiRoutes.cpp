#include "api/apiRoutes.h"

#include "api/stationRoute.h"
#include "api/valuesRoute.h"

void addApiRoutes(HttpRoutes& routes, const StationParts& parts)
{
    addStationRoute(routes, parts);
    addValuesRoute(routes, parts);
}
