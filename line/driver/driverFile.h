#ifndef DRIVER_FILE_H
#define DRIVER_FILE_H

#include "driver/driverLibrary.h"

/// Loads the driver. A name without a slash is searched as the system searches its libraries, and
/// never in the present folder.
/// @throws DriverError; when there is no such file, its text names the folders searched
DriverLibrary loadDriver(const QString& fileName);

/// The path of the file from which the system has loaded the driver.
QString loadedFile(const DriverLibrary& driver);

#endif
