#include "valueRead.h"

#include "dataAreas.h"
#include "driverState.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "wrapAround.h"

#include <cstring>

void copyUnits(int station, const QString& name, int address, qint64 units, int bytes,
               unsigned char* out)
{
    int index = -1;
    for (int i = 0; i < units; ++i) {
        index =
            getIndexOfDataAreaAfter(index, station, name, wrapAdd(address, i), driver.dataAreas);
        std::memcpy(out, shownImage(driver.dataAreas.at(index)), size_t(bytes));
        out += bytes;
    }
}

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
