#ifndef BUILT_DRIVER_H
#define BUILT_DRIVER_H

#include "driver/driverLibrary.h"

/// The driver of this build, loaded once.
inline const DriverLibrary& driver()
{
    static const DriverLibrary library(QString::fromLatin1(KAKB_DRIVER_FILE));
    return library;
}

#endif
