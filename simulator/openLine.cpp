#include "openLine.h"

#include "pseudoTerminal.h"
#include "serialPort.h"
#include "tcpPort.h"

std::unique_ptr<LineEnd> openLine(const SimulatorOptions& options)
{
    if (!options.serialDevice.empty())
        return std::make_unique<SerialPort>(options.serialDevice, options.line.baud);
    if (options.tcpPort >= 0)
        return std::make_unique<TcpPort>(options.bindAddress, options.tcpPort);
    return std::make_unique<PseudoTerminal>(options.linkPath);
}
