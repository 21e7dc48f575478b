#ifndef WATCH_VERB_H
#define WATCH_VERB_H

#include "program/hostProgram.h"

#include <string>
#include <vector>

struct WatchOptions
{
    double seconds = 0;             ///< longest time; 0: no limit
    bool csv = false;               ///< lines of CSV, see CsvOutput
    std::vector<std::string> until; ///< see expectation(); all must be true at one time
    double failWhenBad = 0;         ///< seconds that a tag may be bad; 0: any time
};

/// Polls the tags and shows changes: a table on a terminal, otherwise one line for each change. At
/// the end it prints the link's figures. It ends when the user stops it, when the longest time is
/// over, when all conditions are true, or when a tag was bad for too long.
/// @return EXIT_DONE; with conditions only when they came true
/// @throws VerbFailure when a condition is unusable, with EXIT_UNHEALTHY when a tag was bad for too
///         long or a condition did not come true in time, with EXIT_INTERRUPTED when the user ended
///         the watch before
ExitStatus watch(const DriverLibrary& driver, const LinkOptions& options,
                 const std::vector<Tag>& tags, const WatchOptions& watched);

#endif
