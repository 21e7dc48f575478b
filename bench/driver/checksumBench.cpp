#include "benchHost.h"
#include "checksum.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

std::vector<unsigned char> someBytes(int length)
{
    std::vector<unsigned char> bytes;
    for (int i = 0; i < length; ++i)
        bytes.push_back(static_cast<unsigned char>(37 * i));
    return bytes;
}

void checksum(benchmark::State& state)
{
    const std::vector<unsigned char> bytes = someBytes(int(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            computate_check(bytes.data(), static_cast<unsigned short>(bytes.size())));
        benchmark::ClobberMemory();
    }
}

void checksumBitwise(benchmark::State& state)
{
    const std::vector<unsigned char> bytes = someBytes(int(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(bitwiseChecksum(bytes.data(), int(bytes.size())));
        benchmark::ClobberMemory();
    }
}

BENCHMARK(checksum)->Arg(8)->Arg(256);
BENCHMARK(checksumBitwise)->Arg(8)->Arg(256);

} // namespace
