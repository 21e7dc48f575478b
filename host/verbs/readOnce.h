#ifndef READ_ONCE_H
#define READ_ONCE_H

#include "program/hostProgram.h"

/// The result of reading all tags of a program once.
struct ReadOnce
{
    std::vector<TagState>
        tags;   ///< `good` when the tag was read; else `trouble` says why it was not
    JobEnd end; ///< DONE when all tags were read; otherwise the first failure
};

/// Opens the link and reads the tags. A later event, such as the silence of a tag's station, does
/// not make a value worse that was read.
/// @throws VerbFailure when the link cannot be opened
ReadOnce readOnce(HostProgram& host);

#endif
