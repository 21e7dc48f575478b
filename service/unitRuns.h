#ifndef UNIT_RUNS_H
#define UNIT_RUNS_H

#include "variableElements.h"

#include <QString>

// Functions that mark, copy, store and complete neighbouring units of one area. The files that
// serve this device's layouts call them, and so do the files of otherWidths/.
//
// A unit shows writeImage while writePending is 1, else readImage. Storing leaves readImage as it
// is, so that completion can fall back to it.

/// Marks the neighbouring units of `elements` elements, `units` units each, with the bits from
/// firstMark on.
void markElements(int station, const QString& name, int startAddress, int elements, int units,
                  int firstMark);

/// Copies `bytes` bytes of each of `units` neighbouring units, one unit behind the other.
void copyUnits(int station, const QString& name, int address, qint64 units, int bytes,
               unsigned char* out);

/// Makes `bytes` bytes the pending write of each of `units` neighbouring units, and reports the
/// values that differ from the shown ones.
void storeUnits(const VARIABLE_ELEMENTS& elements, qint64 units, int bytes,
                const unsigned char* values);

/// Makes `bytes` bytes the pending write of one unit.
void keepWritten(int index, int bytes, const quint8* written);

/// Ends the pending state of `units` neighbouring units of `bytes` bytes. Reports an unconfirmed
/// write as a change back to the read value.
void completeUnits(int station, const QString& name, int addr, qint64 units, int bytes,
                   bool confirmed);

/// Ends the pending state of one unit. The first `bytes` written bytes become the read ones if the
/// write is confirmed.
void settleUnit(int index, int bytes, bool confirmed);

#endif
