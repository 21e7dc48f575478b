#ifndef WRITE_CONSENT_H
#define WRITE_CONSENT_H

#include "api/stationParts.h"

// A client writes only with two consents: that of the station, and that of the tag.

/// @throws ApiError READ_ONLY when the station writes nothing
void mustAllowWrites(const StationParts& parts);

/// @throws ApiError READ_ONLY when the station writes nothing or the tag is read-only
void mustBeWritable(const Tag& tag, const StationParts& parts);

#endif
