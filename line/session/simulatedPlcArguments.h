#ifndef SIMULATED_PLC_ARGUMENTS_H
#define SIMULATED_PLC_ARGUMENTS_H

#include "plan/tag.h"
#include "wire/lineTiming.h"

#include <QStringList>

#include <vector>

/// Arguments for SimulatedPlc: it serves the stations of the tags at the speed of the line, and its
/// values move by themselves.
QStringList simulatedPlcArguments(const LineSettings& line, const std::vector<Tag>& tags);

#endif
