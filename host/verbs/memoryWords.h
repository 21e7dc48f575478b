#ifndef MEMORY_WORDS_H
#define MEMORY_WORDS_H

#include "driver/driverLibrary.h"
#include "plan/memoryDump.h"

#include <vector>

/// A tag of type uint16 for a word of the memory, named by its typed address. The word must exist.
Tag wordTag(const MemoryDump::Place& place, const DriverLibrary& driver);

/// The words that texts name: a whole area, "MW" or "2:QW", or typed addresses and ranges of words,
/// "MW100" or "MW0..MW62:float32". Sorted by station, area and number, each word once.
/// @throws TagFileError when a text names no words
std::vector<Tag> memoryWords(const QStringList& texts, const DriverLibrary& driver);

#endif
