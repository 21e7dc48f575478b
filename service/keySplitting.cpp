#include "keySplitting.h"

#include "wrapAround.h"

#include <cstring>

enum { BYTE_UNITS = -1, COPY_DATA = 1 };

/// Copies the values from `firstUnit` on, as far as the key's data reach.
static void takeData(const KEY_ADDRESS& key, qint64 firstUnit, KEY_ADDRESS& piece)
{
    const int unitBytes = key.unitMode == BYTE_UNITS ? 1 : 2;
    const qint64 from = firstUnit * unitBytes;
    const qint64 length = qMin(qint64(piece.count) * unitBytes, qint64(VALUE_BYTES) - from);
    if (length > 0) std::memcpy(piece.data, key.data + from, size_t(length));
}

void groupingKey(const KEY_ADDRESS& key, int maxLen, QList<KEY_ADDRESS>& out, int withData)
{
    if (maxLen < 1 || key.count <= maxLen) {
        out.append(key);
        return;
    }
    for (qint64 first = 0; first < key.count; first += maxLen) {
        KEY_ADDRESS piece = key;
        piece.addr = wrapAdd(key.addr, int(first));
        piece.count = int(qMin(qint64(maxLen), key.count - first));
        if (withData == COPY_DATA) takeData(key, first, piece);
        out.append(piece);
    }
}
