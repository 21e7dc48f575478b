#ifndef LINKED_DRIVER_H
#define LINKED_DRIVER_H

#include "driver/driverLibrary.h"
#include "driverState.h"

#include <new>

// The driver that is linked into the test program itself, whose state the test can look at.

inline const DriverFunctions& linkedDriver()
{
    static const DriverFunctions functions = {intf_getProtocolType,
                                              intf_getVersion,
                                              intf_getDriverParameter,
                                              intf_getDriverPropertyPage,
                                              intf_SetDriverPropertyPage,
                                              intf_setAddrValueChangeCallBack,
                                              intf_initProperty,
                                              intf_checkAddr,
                                              intf_checkAddrValidity,
                                              intf_getRegDiscription,
                                              intf_getRegListByType,
                                              intf_multiCopy,
                                              intf_addrMerge,
                                              intf_addConditionRead,
                                              intf_setRcpAddress,
                                              intf_getSendFrame,
                                              intf_dealRcvFrame,
                                              intf_getData,
                                              intf_setData};
    return functions;
}

/// The state of a driver that was never started, as in a new process.
inline void renewDriver()
{
    driver.~Protocol();
    new (&driver) Protocol();
}

#endif
