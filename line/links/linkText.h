#ifndef LINK_TEXT_H
#define LINK_TEXT_H

#include "wire/lineTiming.h"

#include <QString>

#include <stdexcept>

/// A text names no link. what() is one sentence in UTF-8 that says why.
struct LinkTextError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// What a link is made of where its text leaves something out.
struct LinkDefaults
{
    LineSettings line;
    QString host;
    int port = 0;
};

/// Where the PLC is reached.
struct LinkAddress
{
    enum Kind { SIMULATED, SERIAL, NETWORK };

    Kind kind = SIMULATED;
    QString device;    ///< of a serial link
    LineSettings line; ///< of a serial or simulated link
    QString host;      ///< of a network link, a name or an address
    int port = 0;      ///< of a network link
};

/// From the driver's parameter string (intf_getDriverParameter).
LinkDefaults linkDefaults(const QString& parameter);

/// From "sim", "serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS" or "tcp:HOST,PORT". Parts that are
/// left out or empty take the defaults; only a serial link's device has none. An IPv6 address may
/// stand in square brackets.
/// @throws LinkTextError
LinkAddress linkAddress(const QString& text, const LinkDefaults& defaults);

/// The line's timing; a network has none of its own.
LineTiming timingOf(const LinkAddress& address);

#endif
