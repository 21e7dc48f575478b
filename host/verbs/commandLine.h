#ifndef COMMAND_LINE_H
#define COMMAND_LINE_H

#include "driver/driverLibrary.h"
#include "program/exitStatus.h"

#include <functional>
#include <optional>
#include <string>

/// What the user asked for.
struct Command
{
    std::string driver; ///< library; empty: the one that belongs to this program
    std::function<ExitStatus(const DriverLibrary&)> verb;
};

/// Reads the command line into the command. What the verb needs of it is kept in there.
/// @return an exit status when there is nothing to do any more: after --help or --version, or a
///         usage error, which has been told
std::optional<ExitStatus> parseCommandLine(int argc, char** argv, Command& command);

#endif
