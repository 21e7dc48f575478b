#ifndef DELIVERY_CURSOR_H
#define DELIVERY_CURSOR_H

#include "plant/heldRows.h"
#include "plant/rowRanges.h"

#include <optional>

/// What is stored of the ledger: all rows behind `top` are owed, and before it those that are named
/// here.
struct DeliveryCursor
{
    qint64 file = 0;    ///< identity of the history's file; 0: none was there yet
    qint64 top = 0;     ///< sequence
    qint64 end = 0;     ///< of the last row of the file when this was stored
    qint64 dropped = 0; ///< since the file of the cursor was made
    RowRanges owed;
    HeldRows held;
};

QByteArray cursorBytes(const DeliveryCursor& cursor);

/// Empty: these are no bytes of a cursor, or not all of them.
std::optional<DeliveryCursor> cursorOf(const QByteArray& bytes);

#endif
