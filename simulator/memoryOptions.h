#ifndef MEMORY_OPTIONS_H
#define MEMORY_OPTIONS_H

#include "refusals.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// What the memory holds at the start.
struct MemorySettings
{
    std::string loadFile;             ///< empty: none
    std::vector<PlaceValue> assigned; ///< after the file
};

/// Options of the memory as the command line gives them; finishMemory() reads them.
struct RawMemory
{
    std::vector<std::string> assignments;
    std::vector<std::string> refusals;
};

void addMemory(CLI::App& app, MemorySettings& memory, RawMemory& raw);

/// Call it after the command line is read. Throws CLI::ParseError.
/// @param refusals  of the memory, appended to
/// @param stations  the stations that are served
void finishMemory(MemorySettings& memory, std::vector<Refusal>& refusals, const RawMemory& raw,
                  const std::vector<int>& stations);

#endif
