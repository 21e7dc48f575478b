#ifndef WRITE_ROUTE_H
#define WRITE_ROUTE_H

#include "api/stationParts.h"

/// Adds `POST /api/v1/write` {"link","tag","value"}. The answer comes when the write has ended:
///
///     {"id":7,"outcome":"confirmed"|"refused"|"failed","reason":null,"value":21.5}
///
/// `value` is what the tag holds now, and `reason` is null when the write is confirmed. 404 for an
/// unknown link or tag, 403 when the station or the tag may not be written, 422 for a value that
/// does not fit the tag, see writtenBytes().
void addWriteRoute(HttpRoutes& routes, const StationParts& parts);

#endif
