#include "byteUnits.h"

#include "dataAreas.h"
#include "unitRuns.h"

void storeByteUnits(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    storeUnits(elements, elements.count, 1, values);
}

void completeByteUnits(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    completeUnits(elements.station, elements.area, elements.addr, elements.count, 1, confirmed);
}

void markBytePairs(const VARIABLE_ELEMENTS& elements)
{
    markElements(elements.station, elements.area, elements.addr, qMin(elements.count, 1), 2,
                 MONITOR_PAIR_FIRST);
}

void readBytePairs(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    copyUnits(elements.station, elements.area, elements.addr, qint64(elements.count) * 2, 1, out);
}

void storeBytePairs(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    storeUnits(elements, qint64(elements.count) * 2, 1, values);
}

void completeBytePairs(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    completeUnits(elements.station, elements.area, elements.addr, qint64(elements.count) * 2, 1,
                  confirmed);
}

void markByteQuads(const VARIABLE_ELEMENTS& elements)
{
    markElements(elements.station, elements.area, elements.addr, elements.count / 2, 4,
                 MONITOR_QUAD_FIRST);
}

void readByteQuads(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    copyUnits(elements.station, elements.area, elements.addr, qint64(elements.count / 2) * 4, 1,
              out);
}
