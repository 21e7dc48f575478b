#ifndef MODEL_MERGING_H
#define MODEL_MERGING_H

#include "modelTypes.h"

#include <cstdint>
#include <vector>

namespace model {

/// Order of addresses: station, area, number. Wraps around at 32 bits; cyclic reads compare it
/// signed, recipes unsigned.
std::uint32_t addressWeight(int station, const std::string& area, int addr);

/// One pass over sorted keys. Appends to `starts` the position of each key that opens a block.
std::vector<Key> mergeTouching(const std::vector<Key>& keys, int mergeLimit,
                               std::vector<size_t>& starts);

/// Cyclic reads: unknown areas dropped, sorted, merged where keys touch and then over gaps.
std::vector<Key> planReads(const std::vector<Key>& keys, int mergeLimit);

/// Pieces of at most `longest` units; below 1 nothing is cut.
std::vector<Key> cut(const Key& key, int longest);

} // namespace model

#endif
