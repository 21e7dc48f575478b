// A write from the host's call to the PLC's echo, with others queued before it.

#include "benchHost.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

enum { WRITE_SINGLE_REGISTER = 6, WORDS_POLLED = 1, OTHER_WORDS = 99, WRITE_ID = 1 };

void setWord(int address, int value)
{
    unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF),
                              static_cast<unsigned char>(value >> 8 & 0xFF)};
    intf_setData(STATION, markerWords(), address, 1, bytes, WRITE_ID);
}

/// After ten writes in a row a cyclic read is due.
bool endNextWrite(FRAME_PRO& frame, QByteArray& echo, QByteArray& reply, QString& errorText)
{
    if (intf_getSendFrame(&frame) != 1) return false;
    if (frame.itemCount == 0) return intf_dealRcvFrame(echo, errorText) == REPLY_ACCEPTED;
    if (intf_dealRcvFrame(reply, errorText) != REPLY_ACCEPTED) return false;
    return intf_getSendFrame(&frame) == 1 && intf_dealRcvFrame(echo, errorText) == REPLY_ACCEPTED;
}

/// `range` writes are queued all the time: each new one goes to the word whose write went out last.
/// A read of one word is among every eleven exchanges.
void writeWord(benchmark::State& state)
{
    const int queued = int(state.range(0));
    restartDriver();
    pollBlocks(WORDS_POLLED, 1);
    cacheOtherUnits(OTHER_WORDS);
    for (int i = 0; i < queued; ++i)
        setWord(FIRST_WORD + i, i);
    QByteArray echo = closedFrame({STATION, WRITE_SINGLE_REGISTER, 0, 0, 0, 0});
    QByteArray reply = readReply(WORDS_POLLED, 0);
    FRAME_PRO frame;
    QString errorText;
    int next = queued;
    int value = 0;
    for (auto _ : state) {
        setWord(FIRST_WORD + next, ++value);
        next = next == queued ? 0 : next + 1;
        if (!endNextWrite(frame, echo, reply, errorText))
            return state.SkipWithError("write not confirmed");
    }
}

BENCHMARK(writeWord)->Arg(0)->Arg(100)->Arg(500);

} // namespace
