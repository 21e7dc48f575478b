#ifndef WRITE_COMPLETION_H
#define WRITE_COMPLETION_H

#include "areaRow.h"

#include <QString>

/// Ends the pending state of written elements. With ok 1 the written value becomes the read value;
/// with any other the cache falls back to the read value, and the host is told.
void _write_FailOrSuc(int station, const QString& regName, int addr, int count, int ok);

/// The same in an area with the given row.
void completeWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                          int ok);

#endif
