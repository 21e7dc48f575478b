#ifndef WRITE_VERB_H
#define WRITE_VERB_H

#include "program/hostProgram.h"
#include "verbs/assignment.h"

/// Hands in all writes. Values that one frame holds are one job.
/// @return the job of each assignment
std::vector<int> startWrites(HostProgram& host, const std::vector<Assignment>& assignments);

/// The outcome of a write in words: after JobEnd::DONE, and after the other outcomes. Without a
/// confirmation it does not say "not written", because the PLC may have executed the write.
QString confirmedText(const Assignment& assigned);
QString failureText(const Assignment& assigned, const JobEnd& end);

/// Writes the values in order and waits for the PLC's confirmation of all values. One frame writes
/// the words of an argument.
/// @throws VerbFailure when a value was not confirmed
ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments);

#endif
