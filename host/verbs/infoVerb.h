#ifndef INFO_VERB_H
#define INFO_VERB_H

#include "driver/driverLibrary.h"

#include <cstdio>

/// Identity, default link settings, and the areas with format, range, width and access: as text or
/// as one JSON object on a line, both UTF-8.
void printInfo(std::FILE* out, const DriverLibrary& driver, bool json);

#endif
