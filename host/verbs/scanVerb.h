#ifndef SCAN_VERB_H
#define SCAN_VERB_H

#include "driver/driverLibrary.h"
#include "program/exitStatus.h"
#include "program/linkOptions.h"

#include <vector>

struct ScanOptions
{
    std::vector<int> stations; ///< 1 to 247, in the order of asking
    std::vector<int> bauds;    ///< speeds of a serial link, in the order of trying; empty: its own
};

/// Finds the stations that answer on the link, and prints each station as soon as it has answered.
/// Nothing is written to the PLC. Of the driver only the default settings of the link are used.
/// @return EXIT_DONE when at least one station answers, otherwise EXIT_TIME_OUT; EXIT_INTERRUPTED
///         when the user ended the scan
/// @throws VerbFailure, LinkTextError, LinkError
ExitStatus scanStations(const DriverLibrary& driver, const LinkOptions& options,
                        const ScanOptions& scan);

#endif
