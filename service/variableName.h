#ifndef VARIABLE_NAME_H
#define VARIABLE_NAME_H

#include <QString>

// A host may name a variable by its area and a suffix: "MW_bit" is a bit inside a word. This
// device's variables carry no suffix; register tables of other devices do.

/// The part before the first "_"; the whole name when there is none.
QString areaPart(const QString& name);

/// The part after the first "_"; empty when there is none.
QString suffixPart(const QString& name);

/// True for a variable that is one bit of a wider unit.
bool namesBitOfUnit(const QString& name);

#endif
