#ifndef COMMAND_LINE_H
#define COMMAND_LINE_H

#include "driver/driverLibrary.h"
#include "program/exitStatus.h"

#include <functional>
#include <optional>
#include <string>

using Verb = std::function<ExitStatus(const DriverLibrary&)>;

/// The command of the user.
struct Command
{
    std::string driver; ///< file of the driver; empty: companionDriver()
    Verb verb;
    bool writesFileToStandardOutput = false; ///< then the values go to standard error
};

/// Reads the command line into the command. The command keeps copies of the verb's arguments.
/// @return an exit status when no verb is to run: after --help, after --version, or after a usage
///         error, which has been printed
std::optional<ExitStatus> parseCommandLine(int argc, char** argv, Command& command);

#endif
