#ifndef INFO_VERB_H
#define INFO_VERB_H

#include "driver/driverLibrary.h"

#include <cstdio>

/// Prints the driver's identity, its default link settings and its areas with format, range, width
/// and access: text, or one JSON object on a line, both in UTF-8.
void printInfo(std::FILE* out, const DriverLibrary& driver, bool json);

#endif
