// Planning: keys of one word each, in random order, on as many stations as hold 1,000 each.

#include "addressMerging.h"
#include "benchHost.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

enum { WORDS_OF_STATION = 1000, SEED = 1 };

QList<KEY_ADDRESS> shuffledKeys(int count)
{
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(SEED));
    QList<KEY_ADDRESS> keys;
    for (int number : numbers) {
        KEY_ADDRESS key;
        key.station = STATION + number / WORDS_OF_STATION;
        key.regName = markerWords();
        key.addr = FIRST_WORD + number % WORDS_OF_STATION;
        key.count = 1;
        keys.append(key);
    }
    return keys;
}

/// The merge alone: nothing is marked.
void mergeAlone(benchmark::State& state)
{
    restartDriver();
    const QList<KEY_ADDRESS> wanted = shuffledKeys(int(state.range(0)));
    for (auto _ : state) {
        QList<KEY_ADDRESS> keys = wanted;
        addrMerge(keys, MERGE_FOR_CYCLE);
        if (keys.size() != wanted.size()) return state.SkipWithError("words must not merge");
    }
}

/// The whole of intf_addrMerge; every unit is cached already.
void mergeInAll(benchmark::State& state)
{
    restartDriver();
    QList<KEY_ADDRESS> keys = shuffledKeys(int(state.range(0)));
    intf_addrMerge(keys);
    for (auto _ : state)
        benchmark::DoNotOptimize(intf_addrMerge(keys));
}

BENCHMARK(mergeAlone)->Arg(100)->Arg(1000)->Arg(5000);
BENCHMARK(mergeInAll)->Arg(100)->Arg(1000)->Arg(5000);

} // namespace
