#ifndef AREA_CLASS_H
#define AREA_CLASS_H

#include <QString>

/// True for MX, IX and QX.
bool isBitArea(const QString& regName);

/// True for MW, IW and QW. A name that is no area's is neither.
bool isWordArea(const QString& regName);

#endif
