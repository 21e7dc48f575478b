#ifndef WRITE_GROUPS_H
#define WRITE_GROUPS_H

#include "plan/tag.h"

#include <vector>

/// Tags that are written together, by one frame where they are more than one word: the PLC then has
/// all of the new values or none of them.
struct WriteGroup
{
    std::vector<size_t> tags; ///< indices
    bool isOneFrame = false;  ///< by a recipe of one record; else as a single word or bit
};

/// Words that lie side by side at one station are one group, and a value of two words is one by
/// itself. No value is cut by the limit of 123 words in a frame. Bits and single words stay alone.
/// @param tags  which share no memory
std::vector<WriteGroup> writeGroups(const std::vector<Tag>& tags);

#endif
