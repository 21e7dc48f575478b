#ifndef MONITOR_FLAGS_H
#define MONITOR_FLAGS_H

#include "areaRow.h"

#include <QString>

/// Marks the units of one variable that the host wants reported.
void _setDataAreaMonitorFlag(int station, const QString& regName, int startAddress, int count);

/// The same in an area with the given row.
void setMonitorFlagsOfArea(AreaRow row, int station, const QString& regName, int startAddress,
                           int count);

#endif
