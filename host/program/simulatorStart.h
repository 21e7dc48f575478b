#ifndef SIMULATOR_START_H
#define SIMULATOR_START_H

#include "plan/tag.h"
#include "program/linkOptions.h"
#include "wire/lineTiming.h"

#include <QStringList>

#include <vector>

/// The program file of the simulated PLC: the user's choice, or companionSimulator().
QString simulatorProgram(const LinkOptions& options);

/// Arguments that make the simulated PLC serve the stations of the tags at the speed of the line.
/// The user's arguments come last.
QStringList simulatorArguments(const LinkOptions& options, const LineSettings& line,
                               const std::vector<Tag>& tags);

#endif
