#ifndef ADDRESS_REASON_H
#define ADDRESS_REASON_H

#include "driver/driverLibrary.h"

#include <QString>

// The areas and addresses that a person types, and the reasons why they are not valid. The reasons
// are sentences without the address.

/// The driver's name of an area: "MW" for "MW", "mw" and "%mw". Empty when there is no such area.
QString areaName(const QString& text, const DriverLibrary& driver);

/// Why a text is no area; lists the areas.
QString unknownAreaReason(const QString& area, const DriverLibrary& driver);

/// Why the bit digit of an address is wrong; empty: it is not. The driver accepts a digit above 7
/// and takes a bit of another byte.
/// @param area  name of areaName(), of bits or of words
QString bitDigitReason(const QString& area, const QString& address, const DriverLibrary& driver);

/// Why the driver does not accept an address; empty: it does.
/// @param result  of intf_checkAddr
/// @param area    name of areaName()
/// @param count   words or bits from the address on
QString addressReason(int result, const QString& area, const QString& address, int count,
                      const DriverLibrary& driver);

#endif
