#ifndef ADDRESS_VERBS_H
#define ADDRESS_VERBS_H

#include "driver/driverLibrary.h"

#include <cstdio>

// The verbs that ask the driver about addresses, without any link. Each prints to `out`, as text or
// as one JSON object on a line, both UTF-8. The caller keeps counts and intervals within 1 to
// 65536.

/// Whether `count` units fit at an address: its number and its place on the wire, or why not.
/// @param write  it is to be written as well
/// @return true when it is valid
bool printCheck(std::FILE* out, const DriverLibrary& driver, const QString& area,
                const QString& address, int count, bool write, bool json);

/// `count` addresses, every `interval` units, from one on. Those past the area's end become its
/// highest address, which is said.
/// @return true when the first address is valid; else why not is printed
bool printSeries(std::FILE* out, const DriverLibrary& driver, const QString& area,
                 const QString& address, int count, int interval, bool json);

#endif
