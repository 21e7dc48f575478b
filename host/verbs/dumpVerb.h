#ifndef DUMP_VERB_H
#define DUMP_VERB_H

#include "program/hostProgram.h"

/// Reads words once and writes them as a memory dump, see plan/memoryDump.h. Words that could not
/// be read are named on standard error and in comments of the dump.
/// @param tags      words of memoryWords()
/// @param fileName  the file to write; empty or "-": standard output
/// @throws VerbFailure
ExitStatus dumpMemory(const DriverLibrary& driver, const LinkOptions& options,
                      const std::vector<Tag>& tags, const QString& fileName);

#endif
