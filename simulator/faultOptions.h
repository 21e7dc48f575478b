#ifndef FAULT_OPTIONS_H
#define FAULT_OPTIONS_H

#include "requestHandler.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// Fault options as the command line gives them; finishFaults() turns them into FaultSettings.
struct RawFaults
{
    std::string duplicate = "0";
    std::optional<std::string> late;
    std::optional<std::string> stall;
    std::vector<std::string> silentStations;
    std::optional<int> stallStation;
    int serviceMs = 0;
    int delayMs = 700;
};

void addFaults(CLI::App& app, FaultSettings& faults, RawFaults& raw);

/// Call it after the command line is read. Throws CLI::ParseError.
/// @param stations  the stations that are served
void finishFaults(FaultSettings& faults, const RawFaults& raw, const std::vector<int>& stations);

#endif
