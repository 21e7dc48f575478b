#include "addressBase.h"

enum { MARKER_BASE = 3000 };

int addressBase(const QString& regName, UnitKind kind)
{
    const char* markers = kind == BITS ? "MX" : "MW";
    return regName == QLatin1String(markers) ? MARKER_BASE : 0;
}
