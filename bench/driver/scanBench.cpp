// The search for a cached unit: one word read at the end of the cache, less one read at its start.

#include "benchHost.h"

#include <benchmark/benchmark.h>

namespace {

void readOneWord(benchmark::State& state, int address)
{
    restartDriver();
    cacheOtherUnits(int(state.range(0)));
    unsigned char value[2];
    for (auto _ : state)
        benchmark::DoNotOptimize(intf_getData(NOTED_STATION, markerWords(), address, 1, value));
}

void firstUnit(benchmark::State& state)
{
    readOneWord(state, 0);
}

void lastUnit(benchmark::State& state)
{
    readOneWord(state, int(state.range(0)) - 1);
}

BENCHMARK(firstUnit)->Arg(10000);
BENCHMARK(lastUnit)->Arg(100)->Arg(1000)->Arg(10000);

} // namespace
