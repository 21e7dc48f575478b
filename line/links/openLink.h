#ifndef OPEN_LINK_H
#define OPEN_LINK_H

#include "links/cancellation.h"
#include "links/link.h"
#include "links/linkText.h"

/// Opens the serial port or the network connection of the address.
/// @param cancellation  ends the name lookup and the connecting at once; must outlive the call
/// @throws LinkError when the link cannot be opened
/// @throws std::invalid_argument for a simulated PLC: its program must be started first, see
///         SimulatedPlc
std::unique_ptr<Link> openLink(const LinkAddress& address, Cancellation& cancellation);

#endif
