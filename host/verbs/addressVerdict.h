#ifndef ADDRESS_VERDICT_H
#define ADDRESS_VERDICT_H

#include "driver/driverLibrary.h"

#include <optional>
#include <vector>

/// What the driver says of one address, and what a user wants to know about it. The driver calls a
/// write valid that would end up in another area; the host does not.
struct AddressVerdict
{
    int result = ADDRESS_VALID; ///< an AddressCheckResult: the driver's own answer
    QString reason;             ///< why it is not valid, in words; empty when it is
    QString address;            ///< in the area's own form, "13.1" for "12.9"; valid ones only
    int number = 0;             ///< address number; valid ones only

    bool isValid() const
    {
        return reason.isEmpty();
    }
};

/// Where a unit is on the wire.
struct WirePlace
{
    bool input = false; ///< an input register, read by function 4; else a holding register, by 3
    int firstRegister = 0;
    int lastRegister = 0;
    int bit = -1; ///< of the first unit within its register, 0 to 15; -1 for words
};

/// One area as the driver describes it.
struct AreaDescription
{
    QString name;
    bool bits = false;
    QString format; ///< a D for each decimal digit; O: the bit of a byte
    QString lowest;
    QString highest;
    QString widthCode;
    QString accessCode;
};

/// The areas of words, then those of bits.
std::vector<AreaDescription> describeAreas(const DriverLibrary& driver);

std::optional<AreaDescription> describeArea(const DriverLibrary& driver, const QString& area);

/// @param count  words or bits from the address on, 1 to 65536
AddressVerdict judgeAddress(const DriverLibrary& driver, const QString& area,
                            const QString& address, int count, bool write);

/// Of `count` units from the address number of a valid address on.
WirePlace wirePlace(const DriverLibrary& driver, const AreaDescription& area, int number,
                    int count);

#endif
