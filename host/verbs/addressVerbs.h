#ifndef ADDRESS_VERBS_H
#define ADDRESS_VERBS_H

#include "driver/driverLibrary.h"

#include <cstdio>

// The verbs that ask the driver about addresses, without a link. They print to `out`: text, or one
// JSON object on a line, both in UTF-8. Counts and intervals must be 1 to 65536.

/// Prints whether `count` units at an address are valid. For a valid address it prints the number
/// and the place on the wire, otherwise the reason.
/// @param write  whether the units are to be written too
/// @return true when the address is valid
bool printCheck(std::FILE* out, const DriverLibrary& driver, const QString& area,
                const QString& address, int count, bool write, bool json);

/// Prints `count` addresses at a distance of `interval` units, beginning with `address`. An address
/// past the end of the area becomes the area's highest address; a note says so.
/// @return true when the first address is valid; otherwise the reason is printed
bool printSeries(std::FILE* out, const DriverLibrary& driver, const QString& area,
                 const QString& address, int count, int interval, bool json);

#endif
