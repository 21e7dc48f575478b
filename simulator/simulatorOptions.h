#ifndef SIMULATOR_OPTIONS_H
#define SIMULATOR_OPTIONS_H

#include "linePacing.h"
#include "memoryOptions.h"
#include "requestHandler.h"
#include "signals.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// What the command line asks for.
struct SimulatorOptions
{
    std::vector<int> stations; ///< ascending, each once
    std::string linkPath;
    std::string serialDevice; ///< empty: none
    int tcpPort = -1;         ///< -1: none; 0: any that is free
    std::string bindAddress = "127.0.0.1";
    LineSettings line;
    bool echo = false;
    std::vector<Signal> signals;
    std::vector<int> tankStations;
    unsigned seed = 1;
    MemorySettings memory;
    FaultSettings faults;
    std::string controlPath; ///< empty: no control socket
    std::string reportFile;
    std::string dumpFile;
    bool untilStdinEnds = false;
};

/// Throws CLI::ParseError, also for --help and --version.
SimulatorOptions parseOptions(CLI::App& app, int argc, char** argv);

#endif
