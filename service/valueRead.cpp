#include "valueRead.h"

#include "otherWidths/layoutTable.h"
#include "quorvane_ka_kb_plc.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitRuns.h"

void readValuesOfArea(AreaRow row, int station, const QString& regName, int address, int count,
                      unsigned char* out)
{
    const UnitLayout layout = layoutForReading(row, regName);
    if (layout == BIT_UNIT) return copyUnits(station, regName, address, count, 1, out);
    if (layout == WORD_UNIT) return copyUnits(station, regName, address, count, 2, out);
    functionsOfLayout(layout).read(variableElements(station, regName, address, count), out);
}

int intf_getData(int station, QString regName, int address, int count, unsigned char* out)
{
    if (out != 0) readValuesOfArea(areaRow(regName), station, regName, address, count, out);
    return 1;
}
