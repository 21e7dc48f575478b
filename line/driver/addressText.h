#ifndef ADDRESS_TEXT_H
#define ADDRESS_TEXT_H

#include "driver/driverLibrary.h"

/// Arguments of intf_checkAddr.
enum VariableKind { BIT_VARIABLE = -1, WORD_VARIABLE = 0 };
enum AddressUse { FOR_READING = 0, FOR_WRITING = 1 };

/// The address text of an address number, "100" or "12.3"; empty when the area has no such number.
QString addressText(const DriverLibrary& driver, const QString& area, int number);

/// The address number of an address text; 0 when the text is malformed.
int addressNumber(const DriverLibrary& driver, const QString& area, const QString& address);

#endif
