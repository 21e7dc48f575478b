#ifndef WATCH_VERB_H
#define WATCH_VERB_H

#include "program/hostProgram.h"

/// Polls the tags and shows what changes until the user stops it: on a terminal as a table, else
/// one line a change. Ends with the link's figures.
/// @param seconds  0: until it is stopped
ExitStatus watch(const DriverLibrary& driver, const LinkOptions& options,
                 const std::vector<Tag>& tags, double seconds);

#endif
