#ifndef READ_VERB_H
#define READ_VERB_H

#include "program/hostProgram.h"

/// The tags, and each 32-bit tag twice: with the low word first, then with the high word first.
/// @throws VerbFailure when no tag has 32 bits
std::vector<Tag> inBothOrders(const std::vector<Tag>& tags);

/// The address ahead of a value.
enum ReadLabel {
    NAMED_ONLY,      ///< "level (MW120)"
    WITH_WORD_ORDER, ///< "level (MW120:float32:high)" for a 32-bit tag, also in the JSON object
};

/// Reads the tags once and prints their values.
/// @throws VerbFailure when a tag could not be read
ExitStatus readTags(const DriverLibrary& driver, const LinkOptions& options,
                    const std::vector<Tag>& tags, ReadLabel label);

#endif
