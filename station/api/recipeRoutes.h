#ifndef RECIPE_ROUTES_H
#define RECIPE_ROUTES_H

#include "api/stationParts.h"

/// Adds `POST /api/v1/recipes/download`, `/upload` and `/compare`; the body is that of
/// recipeBodyOf(). The answer comes when the transfer has ended:
///
///     {"outcome":"done"|"failed"|"differs","block":null,"reason":null,
///      "differences":[{"name","expected","found"}],"rows":[]}
///
/// `block` and `reason` say where a failed transfer stopped and why; otherwise they are null.
/// `differences` are those of a comparison, or of a download with `verify`. `rows` are those of an
/// upload that is done, with the values of the PLC; otherwise they are empty.
///
/// A comparison and an upload only read. A download needs a station that allows writes, and for
/// each row a tag with access `rw` of the same place and type: 403 otherwise.
void addRecipeRoutes(HttpRoutes& routes, const StationParts& parts);

#endif
