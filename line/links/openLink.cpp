#include "links/openLink.h"

#include "links/serialLink.h"
#include "links/tcpLink.h"

std::unique_ptr<Link> openLink(const LinkAddress& address, Cancellation& cancellation)
{
    switch (address.kind) {
    case LinkAddress::NETWORK:
        return std::make_unique<TcpLink>(address.host, address.port, cancellation);
    case LinkAddress::SERIAL:
        return std::make_unique<SerialLink>(address.device, address.line);
    default:
        throw std::invalid_argument("the simulated PLC's program is not started");
    }
}
