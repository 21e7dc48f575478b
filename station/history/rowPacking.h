#ifndef ROW_PACKING_H
#define ROW_PACKING_H

#include "history/sqliteFile.h"

/// Moves all fresh rows into packs, in one transaction.
/// @throws SqliteError
void packFreshRows(SqliteFile& file);

#endif
