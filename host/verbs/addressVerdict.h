#ifndef ADDRESS_VERDICT_H
#define ADDRESS_VERDICT_H

#include "driver/driverLibrary.h"

#include <optional>
#include <vector>

/// The verdict on an address, for the user. It is the driver's verdict with two exceptions: a bit
/// digit above 7 and a write that would change another area are not valid, although the driver
/// accepts them.
struct AddressVerdict
{
    int result = ADDRESS_VALID; ///< the driver's AddressCheckResult
    QString reason;             ///< why the address is not valid, in words; empty: it is valid
    QString address;            ///< normal form, "12.3" for "012.3"; only of a valid address
    int number = 0;             ///< address number; only of a valid address

    bool isValid() const
    {
        return reason.isEmpty();
    }
};

/// The registers and bits that units take on the wire.
struct WirePlace
{
    bool input = false; ///< input registers (function 4); false: holding registers (function 3)
    int firstRegister = 0;
    int lastRegister = 0;
    int bit = -1; ///< position of the first unit in its register, 0 to 15; -1: words
};

/// The driver's description of an area.
struct AreaDescription
{
    QString name;
    bool bits = false;
    QString format; ///< D: a decimal digit; O: the bit of a byte, 0 to 7
    QString lowest;
    QString highest;
    QString widthCode;
    QString accessCode;
};

/// The word areas, then the bit areas.
std::vector<AreaDescription> describeAreas(const DriverLibrary& driver);

std::optional<AreaDescription> describeArea(const DriverLibrary& driver, const QString& area);

/// Checks an address.
/// @param count  words or bits from the address on, 1 to 65536
/// @param write  whether they are to be written too
AddressVerdict judgeAddress(const DriverLibrary& driver, const QString& area,
                            const QString& address, int count, bool write);

/// The place of `count` units from an address number on. The address must be valid.
WirePlace wirePlace(const DriverLibrary& driver, const AreaDescription& area, int number,
                    int count);

#endif
