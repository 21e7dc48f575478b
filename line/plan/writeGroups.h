#ifndef WRITE_GROUPS_H
#define WRITE_GROUPS_H

#include "plan/tag.h"

#include <vector>

/// Tags that are written together. A group of more than one word is written by one frame, so the
/// PLC has all new values or none.
struct WriteGroup
{
    std::vector<size_t> tags; ///< indices
    bool isOneFrame = false;  ///< written by a recipe of one record; otherwise a single word or bit
};

/// Groups the tags. Adjacent words of one station are a group, and a value of two words is a group.
/// A bit or a word without neighbours is a group of its own. The limit of 123 words in a frame
/// never splits a value or a list.
/// @param tags   must not share memory
/// @param lists  by tag, the number of its list. The tags of a list lie one right behind the other
///               and have no more words than a frame. Empty: each tag is a list.
std::vector<WriteGroup> writeGroups(const std::vector<Tag>& tags,
                                    const std::vector<size_t>& lists = {});

#endif
