#ifndef LINK_TEXT_H
#define LINK_TEXT_H

#include "driver/driverLibrary.h"
#include "wire/lineTiming.h"

#include <QString>

#include <stdexcept>

/// A text is no link address. what() is one sentence in UTF-8 with the reason.
struct LinkTextError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The values for parts that the text of a link address leaves out.
struct LinkDefaults
{
    LineSettings line;
    QString host;
    int port = 0;
};

/// The address of a PLC: a serial port, a network address or the simulated PLC.
struct LinkAddress
{
    enum Kind { SIMULATED, SERIAL, NETWORK };

    Kind kind = SIMULATED;
    QString device;    ///< of a serial link
    LineSettings line; ///< of a serial or simulated link
    QString host;      ///< of a network link, a name or an address
    int port = 0;      ///< of a network link
};

/// The defaults from the driver's parameter string (intf_getDriverParameter).
LinkDefaults linkDefaults(const QString& parameter);

/// Reads "sim", "serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS" or "tcp:HOST,PORT". A part that is
/// left out or empty takes its default. The device of a serial link has no default. Square brackets
/// around an IPv6 address are permitted.
/// @throws LinkTextError
LinkAddress linkAddress(const QString& text, const LinkDefaults& defaults);

/// The same with the driver's defaults.
LinkAddress linkAddress(const QString& text, const DriverLibrary& driver);

/// The timing of the line. On a network bytes and silent intervals take no time.
LineTiming timingOf(const LinkAddress& address);

#endif
