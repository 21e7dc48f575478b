#ifndef SHARED_MEMORY_H
#define SHARED_MEMORY_H

#include "plan/tag.h"

#include <utility>
#include <vector>

// The PLC's memory behind the areas: words and bits of one letter (QW and QX, MW and MX, IW and IX)
// are the same memory, in which bit k of word w is bit 16 w + k.

/// All pairs of tags that lie at least in part in the same memory of the same station: indices, the
/// smaller one first, in ascending order.
std::vector<std::pair<size_t, size_t>> sharingTags(const std::vector<Tag>& tags);

/// Why `count` bits from an address number of a bit area on cannot be written; empty: they can. The
/// functions for coils know one row of them, in which number 3000 is MX 0.0: a bit of QX whose
/// number is as high would be written to the markers. It can be read, as part of its word.
QString coilProblem(const QString& area, int number, int count);

#endif
