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

/// Ends the pending state of `units` neighbouring units of `bytes` bytes. Of an unconfirmed write
/// the change back to the read value is reported.
void completeUnits(int station, const QString& name, int addr, qint64 units, int bytes,
                   bool confirmed);

/// Ends the pending state of one unit. The first `bytes` written bytes become the read ones if the
/// write is confirmed.
void settleUnit(int index, int bytes, bool confirmed);

#endif
