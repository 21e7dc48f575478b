#ifndef WRITE_VERB_H
#define WRITE_VERB_H

#include "program/hostProgram.h"
#include "verbs/assignment.h"

/// Writes the values in order and waits for the PLC's confirmation of all values. One frame writes
/// the words of an argument.
/// @throws VerbFailure when a value was not confirmed
ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments);

#endif
