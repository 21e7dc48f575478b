#ifndef DRIVER_LIBRARY_H
#define DRIVER_LIBRARY_H

#include "quorvane_ka_kb_plc.h"

#include <QLibrary>

#include <stdexcept>

/// The driver cannot be loaded. what() is the reason.
struct DriverError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The system has no such library, or refuses it.
struct DriverNotLoaded : DriverError
{
    using DriverError::DriverError;
};

/// The driver's exported functions. The name of each member is that of the function without the
/// prefix "intf_".
struct DriverFunctions
{
    decltype(&intf_getProtocolType) getProtocolType;
    decltype(&intf_getVersion) getVersion;
    decltype(&intf_getDriverParameter) getDriverParameter;
    decltype(&intf_getDriverPropertyPage) getDriverPropertyPage;
    decltype(&intf_SetDriverPropertyPage) setDriverPropertyPage;
    decltype(&intf_setAddrValueChangeCallBack) setAddrValueChangeCallBack;
    decltype(&intf_initProperty) initProperty;
    decltype(&intf_checkAddr) checkAddr;
    decltype(&intf_checkAddrValidity) checkAddrValidity;
    decltype(&intf_getRegDiscription) getRegDiscription;
    decltype(&intf_getRegListByType) getRegListByType;
    decltype(&intf_multiCopy) multiCopy;
    decltype(&intf_addrMerge) addrMerge;
    decltype(&intf_addConditionRead) addConditionRead;
    decltype(&intf_setRcpAddress) setRcpAddress;
    decltype(&intf_getSendFrame) getSendFrame;
    decltype(&intf_dealRcvFrame) dealRcvFrame;
    decltype(&intf_getData) getData;
    decltype(&intf_setData) setData;
};

/// The driver, loaded by file name. The constructor throws DriverNotLoaded, or DriverError when a
/// function is missing.
class DriverLibrary : public DriverFunctions
{
public:
    explicit DriverLibrary(const QString& fileName);

private:
    template <typename Function> void resolve(Function& function, const char* name);

    QLibrary m_library;
};

#endif
