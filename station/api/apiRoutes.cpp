#include "api/apiRoutes.h"

#include "api/framesRoutes.h"
#include "api/healthRoute.h"
#include "api/historyRoutes.h"
#include "api/metricsRoute.h"
#include "api/planRoute.h"
#include "api/plantRoute.h"
#include "api/recipeRoutes.h"
#include "api/stationRoute.h"
#include "api/valuesRoute.h"
#include "api/writeRoute.h"

void addApiRoutes(HttpRoutes& routes, const StationParts& parts)
{
    addStationRoute(routes, parts);
    addValuesRoute(routes, parts);
    addFramesRoutes(routes, parts);
    addHistoryRoutes(routes, parts);
    addWriteRoute(routes, parts);
    addRecipeRoutes(routes, parts);
    addPlanRoute(routes, parts);
    addPlantRoute(routes, parts);
    addMetricsRoute(routes, parts);
    addHealthRoute(routes, parts);
}
