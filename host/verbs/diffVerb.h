#ifndef DIFF_VERB_H
#define DIFF_VERB_H

#include "program/hostProgram.h"

/// Compares the PLC with a file, a recipe or a memory dump, and prints every difference. Nothing is
/// written to the PLC.
/// @return EXIT_DONE only when every value of the file was read and is equal; EXIT_VERIFY when
///         values differ; the status of the first failure when values could not be read
/// @throws VerbFailure, TagFileError
ExitStatus compareWithFile(const DriverLibrary& driver, const LinkOptions& options,
                           const QString& fileName);

#endif
