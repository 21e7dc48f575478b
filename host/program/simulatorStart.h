#ifndef SIMULATOR_START_H
#define SIMULATOR_START_H

#include "plan/tag.h"
#include "program/linkOptions.h"
#include "wire/lineTiming.h"

#include <QStringList>

#include <vector>

/// The program of the simulated PLC: the user's, else the program beside this one.
QString simulatorProgram(const LinkOptions& options);

/// The simulated PLC's arguments: it serves the stations of the tags at the line's speed, and takes
/// the user's own arguments last.
QStringList simulatorArguments(const LinkOptions& options, const LineSettings& line,
                               const std::vector<Tag>& tags);

#endif
