#include "driver/driverLibrary.h"

#include <string>

template <typename Function> void DriverLibrary::resolve(Function& function, const char* name)
{
    function = reinterpret_cast<Function>(m_library.resolve(name));
    if (function == nullptr) throw DriverError(std::string("the driver has no function ") + name);
}

DriverLibrary::DriverLibrary(const QString& fileName) : m_library(fileName)
{
    if (!m_library.load()) throw DriverNotLoaded(m_library.errorString().toStdString());
    resolve(getProtocolType, "intf_getProtocolType");
    resolve(getVersion, "intf_getVersion");
    resolve(getDriverParameter, "intf_getDriverParameter");
    resolve(getDriverPropertyPage, "intf_getDriverPropertyPage");
    resolve(setDriverPropertyPage, "intf_SetDriverPropertyPage");
    resolve(setAddrValueChangeCallBack, "intf_setAddrValueChangeCallBack");
    resolve(initProperty, "intf_initProperty");
    resolve(checkAddr, "intf_checkAddr");
    resolve(checkAddrValidity, "intf_checkAddrValidity");
    resolve(getRegDiscription, "intf_getRegDiscription");
    resolve(getRegListByType, "intf_getRegListByType");
    resolve(multiCopy, "intf_multiCopy");
    resolve(addrMerge, "intf_addrMerge");
    resolve(addConditionRead, "intf_addConditionRead");
    resolve(setRcpAddress, "intf_setRcpAddress");
    resolve(getSendFrame, "intf_getSendFrame");
    resolve(dealRcvFrame, "intf_dealRcvFrame");
    resolve(getData, "intf_getData");
    resolve(setData, "intf_setData");
}
