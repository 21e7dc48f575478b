#ifndef ROW_PACKING_H
#define ROW_PACKING_H

#include "history/sqliteFile.h"

#include <atomic>

/// Moves all fresh rows into packs, in one transaction.
/// @param isHurried  somebody waits for the end, and sets it: then nothing is moved
/// @return whether the rows were moved
/// @throws SqliteError
bool packFreshRows(SqliteFile& file, const std::atomic<bool>& isHurried = false);

#endif
