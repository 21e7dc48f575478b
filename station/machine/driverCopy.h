#ifndef DRIVER_COPY_H
#define DRIVER_COPY_H

#include "driver/driverLibrary.h"

#include <memory>

/// Loads a copy of the driver of its own. The driver keeps its state for each loaded library, and
/// the loader gives the same library again for a name or a file that it knows: each copy is a file
/// of its own, in memory, under a name that was never used before.
/// @throws DriverError
std::unique_ptr<DriverLibrary> loadDriverCopy(const QString& fileName);

#endif
