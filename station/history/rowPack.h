#ifndef ROW_PACK_H
#define ROW_PACK_H

#include "history/historyRow.h"

#include <QByteArray>

#include <optional>

// Rows of one tag as bytes, 5 to 8 a row in practice, where a table takes about 30.
//
//     a row:  sequence  time   state   value
//             varint    varint 1 byte  0 to 8 bytes     the first two: since the row before
//
//     state:  bits 0, 1: quality   bit 2: has a value   bits 3, 4: form of the value
//     forms:  0 as in the row before   1 integer, zigzag varint   2 float   3 double
//
// A varint has seven bits a byte, the lowest first; bit 7 says that another byte follows. Numbers
// of several bytes have the lowest byte first.

/// @param rows  neither sequence nor time goes back
QByteArray packedRows(const std::vector<HistoryRow>& rows);

/// Empty: the bytes are no packed rows.
std::optional<std::vector<HistoryRow>> unpackedRows(const QByteArray& packed);

#endif
