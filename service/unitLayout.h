#ifndef UNIT_LAYOUT_H
#define UNIT_LAYOUT_H

#include "areaRow.h"

#include <QString>

/// How the elements of a variable lie in the cached units of its area. This device's areas have
/// the first two layouts; otherWidths/layoutTable.h has the functions of the others, in this order.
enum UnitLayout {
    BIT_UNIT,    ///< one bit, or one byte, a unit
    WORD_UNIT,   ///< one word a unit
    NO_UNITS,    ///< an unknown area: nothing is cached
    BYTE_UNIT,   ///< one byte a unit
    DOUBLE_UNIT, ///< four bytes a unit
    BYTE_PAIR,   ///< a word in two byte units
    BYTE_QUAD,   ///< four bytes in four byte units
    WORD_PAIR,   ///< four bytes in two word units
    BIT_OF_BYTE, ///< "_bit" variable in a byte unit
    BIT_OF_WORD  ///< "_bit" variable in a word unit
};

/// Layout for marking units and for reading values.
UnitLayout layoutForReading(AreaRow row, const QString& regName);

/// Layout for storing and completing writes. It differs from the layout for reading in 8-bit areas,
/// and in 32-bit areas of byte units, which it takes as whole units.
UnitLayout layoutForWriting(AreaRow row, const QString& regName);

#endif
