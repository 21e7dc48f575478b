#ifndef AREA_ROW_H
#define AREA_ROW_H

#include <QString>

enum { AREA_COUNT = 6 };

/// Columns of an area's row. All are texts, as the host's editor wants them.
enum AreaColumn {
    FORMAT,     ///< address pattern: D a decimal digit, a last O the bit digit 0 to 7
    MIN_TEXT,   ///< lowest valid address
    MAX_TEXT,   ///< highest valid address
    DATA_WIDTH, ///< bits of one element
    ACCESS,     ///< "R" read-only, "W" write-only, "RW" both
    UNIT_BITS,  ///< bits that one step of the address number covers
    AREA_COLUMN_COUNT
};

/// One row of the register table, AREA_COLUMN_COUNT texts; index it with an AreaColumn.
typedef const QString* AreaRow;

#endif
