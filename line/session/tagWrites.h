#ifndef TAG_WRITES_H
#define TAG_WRITES_H

#include "plan/tag.h"
#include "session/recipeTransfers.h"
#include "session/writeJobs.h"

// The jobs that write tags. A tag of one word or bit is one element. A tag of two words, and tags
// whose words lie one behind the other, go in one frame: the PLC has all new words or none.

/// The elements that write a tag, one frame each.
/// @param bytes  in the format of intf_setData
/// @param label  the user's name of the tag
std::vector<ElementWrite> elementWrites(const Tag& tag, const QByteArray& bytes,
                                        const QString& label);

/// The job that writes tags by one frame. A newer job of the same words replaces it while it waits.
/// @param tags    of words, one right behind the other, at most RecipePlan::MOST_RECORD_WORDS
/// @param values  by tag, in the format of intf_setData
/// @throws RecipeError when two tags share memory
RecipeJob oneFrameWrite(int job, const std::vector<Tag>& tags,
                        const std::vector<QByteArray>& values);

#endif
