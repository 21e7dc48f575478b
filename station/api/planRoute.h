#ifndef PLAN_ROUTE_H
#define PLAN_ROUTE_H

#include "api/stationParts.h"

/// Adds `GET /api/v1/plan?link=`: the requests that read the tags of a link, as planned.
///
///     {"link","cycle":ms,"bound":"pace"|"line",
///      "reads":[{"station","first":"MW100","count","unit":"words"|"bits","rate","tags":[name,…]}]}
///
/// `cycle` is the planned time from the start of a cycle to the next start, and `bound` says what
/// makes it so long. A refused request is read in parts later; the plan does not show it.
void addPlanRoute(HttpRoutes& routes, const StationParts& parts);

#endif
