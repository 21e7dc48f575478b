#include "memoryOptions.h"

#include "placeText.h"

#include <algorithm>

namespace {

[[noreturn]] void refuse(const char* option, const std::string& why)
{
    throw CLI::ValidationError(option, why);
}

void checkServed(const char* option, int station, const std::vector<int>& stations)
{
    if (std::find(stations.begin(), stations.end(), station) == stations.end())
        refuse(option, "there is no station " + std::to_string(station));
}

} // namespace

void addMemory(CLI::App& app, MemorySettings& memory, RawMemory& raw)
{
    app.add_option("--load", memory.loadFile,
                   "start with the memory that --dump wrote (default: all 0)")
        ->type_name("FILE");
    app.add_option("--set", raw.assignments,
                   "start with a value, such as MW100=5 or 2:MX12.3=1; repeat the option for more "
                   "values (default: none)")
        ->type_name("[STATION:]ADDRESS=VALUE")
        ->allow_extra_args(false);
    app.add_option("--refuse", raw.refusals,
                   "answer what touches these addresses, such as MW500..MW600, with exception CODE "
                   "(default: 2); with :write only what writes them; repeat the option for more "
                   "addresses (default: none)")
        ->type_name("[STATION:]FIRST[..LAST][:CODE][:write]")
        ->allow_extra_args(false);
}

void finishMemory(MemorySettings& memory, std::vector<Refusal>& refusals, const RawMemory& raw,
                  const std::vector<int>& stations)
{
    for (const std::string& text : raw.assignments) {
        PlaceValue assigned;
        const std::string trouble = parseAssignment(text, assigned);
        if (!trouble.empty()) refuse("--set", trouble);
        checkServed("--set", assigned.place.station, stations);
        memory.assigned.push_back(assigned);
    }
    for (const std::string& text : raw.refusals) {
        Refusal refusal;
        const std::string trouble = parseRefusal(text, refusal);
        if (!trouble.empty()) refuse("--refuse", trouble);
        checkServed("--refuse", refusal.station, stations);
        refusals.push_back(refusal);
    }
}
