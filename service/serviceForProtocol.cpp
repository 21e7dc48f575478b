#include "serviceForProtocol.h"

#include "driverState.h"
#include "registerTables.h"

// Holds the service unit's one copy of the register tables and identity texts, the driver state,
// and the identity exports. The state is built after the tables, because its constructor copies the
// area names.

Protocol driver;

Protocol::Protocol()
{
    for (int i = 0; i < AREA_COUNT; ++i)
        regNames.append(REG_LIST[i]);
}

Protocol::~Protocol() {}

int areaIndex(const QString& regName)
{
    return indexInRegList(regName);
}

AreaRow areaRow(int index)
{
    return ADDRESS_RANGE_PRO[index];
}

AreaRow areaRow(const QString& regName)
{
    return areaRow(areaIndex(regName));
}

QString sharedName(const QString& name)
{
    const int index = areaIndex(name);
    return index < AREA_COUNT ? REG_LIST[index] : name;
}

const QString& areaName(int index)
{
    return REG_LIST[index];
}

void intf_getProtocolType(int* type)
{
    if (type != 0) *type = 0;
}

void intf_getVersion(QString* version)
{
    if (version != 0) *version = PROCOTOL_VERSION;
}

void intf_getDriverParameter(QString* parameter)
{
    if (parameter == 0) return;
    *parameter = QString(QLatin1String("%1,%2,%3,%4,%5,%6,%7"))
                     .arg(0)
                     .arg(PROCOTOL_DEFALT_COM_PAR)
                     .arg(0)
                     .arg(51)
                     .arg(PROCOTOL_DEFALT_IP_PAR)
                     .arg(PROCOTOL_NAME)
                     .arg(driver.regNames.join(QLatin1String(",")));
}

void intf_getDriverPropertyPage(QString* page)
{
    if (page != 0) *page = PROCOTOL_PAR_HMI_SET_MODE;
}

void intf_SetDriverPropertyPage(const QString* page)
{
    if (page != 0) driver.propertyPage = *page;
}

void intf_setAddrValueChangeCallBack(ValueChangeCallBack callBack)
{
    driver.valueChangeCallBack = callBack;
}
