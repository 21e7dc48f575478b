#ifndef WRITE_REQUEST_H
#define WRITE_REQUEST_H

#include "areaRow.h"

#include <QString>

/// Queues one write per element of an area with the given row; see intf_setData.
void queueWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                       const unsigned char* values, int varId);

#endif
