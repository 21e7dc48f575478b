#ifndef INSPECTION_VERBS_H
#define INSPECTION_VERBS_H

#include "verbs/commandLine.h"
#include "verbs/commandOptions.h"

// The command line of the verbs that look at a whole line or a whole memory.

/// Adds the verb scan, which has options of its own because its defaults differ.
/// @param chosen  is set when the user calls the verb
void addScan(CLI::App& app, Verb& chosen);

/// Adds the verbs dump and diff.
void addMemory(CLI::App& app, CommandOptions& o, Verb& chosen);

#endif
