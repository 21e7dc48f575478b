#include "sortOrder.h"

#include "driverState.h"
#include "wrapAround.h"

enum { WEIGHT_OF_AREA = 65535 };

int getRegAddressWeight(int station, const QString& regName, int addr)
{
    const int areas = int(driver.regNames.size());
    const int area = int(driver.regNames.indexOf(regName));
    const int block = wrapAdd(wrapMul(station, areas), area);
    return wrapAdd(wrapMul(block, WEIGHT_OF_AREA), addr);
}
