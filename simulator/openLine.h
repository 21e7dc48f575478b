#ifndef OPEN_LINE_H
#define OPEN_LINE_H

#include "lineEnd.h"
#include "simulatorOptions.h"

#include <memory>

/// Opens the line that the command line asks for: a serial port, a TCP port or a pseudo-terminal.
/// Throws LinkError.
std::unique_ptr<LineEnd> openLine(const SimulatorOptions& options);

#endif
