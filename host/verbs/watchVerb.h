#ifndef WATCH_VERB_H
#define WATCH_VERB_H

#include "program/hostProgram.h"

/// Polls the tags and shows changes until the user stops it: a table on a terminal, otherwise one
/// line for each change. At the end it prints the link's figures.
/// @param seconds  longest time; 0: no limit
ExitStatus watch(const DriverLibrary& driver, const LinkOptions& options,
                 const std::vector<Tag>& tags, double seconds);

#endif
