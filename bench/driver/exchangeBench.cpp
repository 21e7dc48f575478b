// Cyclic exchanges: intf_getSendFrame and intf_dealRcvFrame for reads that are polled.

#include "benchHost.h"

#include <benchmark/benchmark.h>

namespace {

void runExchanges(benchmark::State& state, QByteArray reply, QByteArray nextReply)
{
    FRAME_PRO frame;
    QString errorText;
    for (auto _ : state) {
        if (!exchange(frame, reply, errorText)) return state.SkipWithError("reply not accepted");
        reply.swap(nextReply);
    }
}

/// One word a request, `range` words polled and cached.
void oneWord(benchmark::State& state)
{
    restartDriver();
    pollBlocks(int(state.range(0)), 1);
    runExchanges(state, readReply(1, 0), readReply(1, 0));
}

/// One block of 125 words, of `range` cached units the last ones.
void blockUnchanged(benchmark::State& state)
{
    restartDriver();
    cacheOtherUnits(int(state.range(0)) - MOST_WORDS);
    pollBlocks(1, MOST_WORDS);
    runExchanges(state, readReply(MOST_WORDS, 0), readReply(MOST_WORDS, 0));
}

void blockChanged(benchmark::State& state)
{
    restartDriver();
    cacheOtherUnits(int(state.range(0)) - MOST_WORDS);
    pollBlocks(1, MOST_WORDS);
    runExchanges(state, readReply(MOST_WORDS, 0x1234), readReply(MOST_WORDS, 0x4321));
}

BENCHMARK(oneWord)->Arg(1)->Arg(100)->Arg(1000);
BENCHMARK(blockUnchanged)->Arg(125)->Arg(1000)->Arg(10000);
BENCHMARK(blockChanged)->Arg(125);

} // namespace
