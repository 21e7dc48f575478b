#ifndef READ_VERB_H
#define READ_VERB_H

#include "program/hostProgram.h"

/// Reads the tags once and prints their values. Throws VerbFailure when one could not be read.
ExitStatus readTags(const DriverLibrary& driver, const LinkOptions& options,
                    const std::vector<Tag>& tags);

#endif
