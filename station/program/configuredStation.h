#ifndef CONFIGURED_STATION_H
#define CONFIGURED_STATION_H

#include "driver/driverLibrary.h"
#include "program/stationConfig.h"
#include "program/stationOptions.h"

/// The configuration that the options ask for: that of the file, or of the one link. Reads the
/// configuration file, the tag files and the token file. Options replace the keys of the file.
/// @throws StationFailure with all mistakes, STATION_USAGE
StationConfig configuredStation(const StationOptions& options, const DriverLibrary& driver);

#endif
