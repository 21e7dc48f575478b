#include "writeRequest.h"

#include "cappedList.h"
#include "driverState.h"
#include "localStore.h"
#include "serviceForProtocol.h"
#include "wrapAround.h"

#include <cstring>

enum { WORD_BITS = 16, BYTE_BITS = 8 };

void queueWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                       const unsigned char* values, int varId)
{
    const int unitBits = row[UNIT_BITS].toInt();
    if (unitBits < 1) return;
    const bool bits = row[DATA_WIDTH].toInt() == 1;
    const qint64 entries = bits ? count : qint64(count) * WORD_BITS / unitBits;
    const int bytes = bits ? 1 : unitBits / BYTE_BITS;

    VARIABLE var;
    var.varId = varId;
    var.station = station;
    var.regName = regName;
    var.count = 1;
    for (qint64 i = 0; i < entries; ++i) {
        var.addr = wrapAdd(addr, int(i));
        std::memcpy(var.value, values + i * bytes, size_t(bytes));
        coalesceIntoCappedList(driver.writeList, var);
    }
}

int intf_setData(int station, QString regName, int addr, int count, unsigned char* values,
                 int varId)
{
    if (values == 0) return 1;
    if (driver.localOnly == 0)
        queueWritesOfArea(areaRow(regName), station, regName, addr, count, values, varId);
    write_saveDataToArea(station, regName, addr, count, values);
    return 1;
}
