#ifndef ADDRESS_BASE_H
#define ADDRESS_BASE_H

#include <QString>

enum UnitKind { BITS, WORDS };

/// The lowest address number of an area: 3000 for the markers, MX among the bits and MW among the
/// words, and 0 for every other name.
int addressBase(const QString& regName, UnitKind kind);

#endif
