#ifndef OPEN_LINK_H
#define OPEN_LINK_H

#include "links/cancellation.h"
#include "links/link.h"
#include "links/linkText.h"

/// Opens the serial port or the connection that the address names. Throws LinkError, and for a
/// simulated PLC std::invalid_argument: its program has to be started first, see SimulatedPlc.
/// @param cancellation  ends the lookup of a name and the connecting at once; has to outlive the
///                      opening
std::unique_ptr<Link> openLink(const LinkAddress& address, Cancellation& cancellation);

#endif
