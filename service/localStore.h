#ifndef LOCAL_STORE_H
#define LOCAL_STORE_H

#include "areaRow.h"

#include <QString>

/// Stores the host's values in the cache as pending, so that the host reads back its own writes at
/// once, and reports the values that differ from the shown ones.
void write_saveDataToArea(int station, const QString& regName, int addr, int count,
                          const unsigned char* values);

/// The same in an area with the given row.
void storeWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                       const unsigned char* values);

#endif
