#ifndef CONFIGURED_STATION_H
#define CONFIGURED_STATION_H

#include "driver/driverLibrary.h"
#include "program/stationConfig.h"
#include "program/stationOptions.h"

/// The configuration that the options ask for. Reads the configuration file and the tag files.
/// @throws StationFailure with all mistakes, STATION_CONFIGURATION
StationConfig configuredStation(const StationOptions& options, const DriverLibrary& driver);

#endif
