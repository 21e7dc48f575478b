#ifndef ADDRESS_TEXT_H
#define ADDRESS_TEXT_H

#include "driver/driverLibrary.h"

/// What intf_checkAddr asks of a variable.
enum VariableKind { BIT_VARIABLE = -1, WORD_VARIABLE = 0 };
enum AddressUse { FOR_READING = 0, FOR_WRITING = 1 };

/// The address of a number as the user knows it, "100" or "12.3"; empty when the area has none.
QString addressText(const DriverLibrary& driver, const QString& area, int number);

#endif
