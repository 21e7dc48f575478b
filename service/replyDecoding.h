#ifndef REPLY_DECODING_H
#define REPLY_DECODING_H

#include "areaRow.h"
#include "driverState.h"

#include <QByteArray>

/// Stores an accepted read reply in the cache and reports the units that changed; during a recipe
/// upload, hands it on to the recipe buffer as well.
/// @param count      units that the request asked for; a reply that holds fewer gives zeros
/// @param dataStart  offset of the first data byte
/// @param var        station, area and start address of the request
void analyzeFrameOfVal(const QByteArray& reply, int count, int dataStart, const VARIABLE& var);

/// The same in an area with the given row.
void decodeReplyOfArea(AreaRow row, const QByteArray& reply, int count, int dataStart,
                       const VARIABLE& var);

#endif
