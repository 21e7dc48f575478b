// Drives the driver a given number of times, for counting its instructions: the difference of two
// runs that differ in the number alone leaves start-up out.
//
// usage: instructionCount KIND TIMES
//   word    read of one word, of 100 polled and cached
//   block   read of 125 words, 125 cached, nothing changed
//   changed the same, with every word changed, monitored and reported to an empty callback
//   scan    read of one word, the last of 10,000 cached
//   write   write of one word with 500 queued, and its echo
//   merge   plan of 1,000 keys in scattered order, every unit cached already
// Exit status: 0 done, 1 usage, 2 the driver did not take a reply.

#include "benchHost.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

enum {
    WORDS_POLLED = 100,
    WRITES_QUEUED = 500,
    KEYS = 1000,
    UNITS_SCANNED = 10000,
    STRIDE = 617, ///< prime to KEYS, so every key comes once
    WRITE_SINGLE_REGISTER = 6,
    CHANGED_VALUE = 0x1234
};

/// All words come as 0 and as `otherValue` in turn.
bool readAgainAndAgain(int blocks, int words, int otherValue, int times)
{
    pollBlocks(blocks, words);
    QByteArray reply = readReply(words, 0);
    QByteArray nextReply = readReply(words, otherValue);
    FRAME_PRO frame;
    QString errorText;
    for (int i = 0; i < times; ++i) {
        if (!exchange(frame, reply, errorText)) return false;
        reply.swap(nextReply);
    }
    return true;
}

bool scanAgainAndAgain(int times)
{
    cacheOtherUnits(UNITS_SCANNED - 1);
    return readAgainAndAgain(1, 1, 0, times);
}

void setWord(int number, int value)
{
    unsigned char bytes[2] = {static_cast<unsigned char>(value & 0xFF), 0};
    intf_setData(STATION, markerWords(), FIRST_WORD + number, 1, bytes, 1);
}

/// Nothing is polled, so the engine pauses after ten writes and goes on when asked again.
bool exchangeWrite(FRAME_PRO& frame, QByteArray& echo, QString& errorText)
{
    if (exchange(frame, echo, errorText)) return true;
    return exchange(frame, echo, errorText);
}

bool writeAgainAndAgain(int times)
{
    for (int i = 0; i < WRITES_QUEUED; ++i)
        setWord(i, i);
    QByteArray echo = closedFrame({STATION, WRITE_SINGLE_REGISTER, 0, 0, 0, 0});
    FRAME_PRO frame;
    QString errorText;
    for (int i = 0; i < times; ++i) {
        setWord((WRITES_QUEUED + i) % (WRITES_QUEUED + 1), i + 1);
        if (!exchangeWrite(frame, echo, errorText)) return false;
    }
    return true;
}

bool mergeAgainAndAgain(int times)
{
    QList<KEY_ADDRESS> keys;
    for (int i = 0; i < KEYS; ++i) {
        KEY_ADDRESS key;
        key.station = STATION;
        key.regName = markerWords();
        key.addr = FIRST_WORD + i * STRIDE % KEYS;
        key.count = 1;
        keys.append(key);
    }
    for (int i = 0; i < times; ++i) {
        if (intf_addrMerge(keys) != KEYS) return false;
    }
    return true;
}

bool run(const char* kind, int times)
{
    if (std::strcmp(kind, "word") == 0) return readAgainAndAgain(WORDS_POLLED, 1, 0, times);
    if (std::strcmp(kind, "block") == 0) return readAgainAndAgain(1, MOST_WORDS, 0, times);
    if (std::strcmp(kind, "changed") == 0)
        return readAgainAndAgain(1, MOST_WORDS, CHANGED_VALUE, times);
    if (std::strcmp(kind, "scan") == 0) return scanAgainAndAgain(times);
    if (std::strcmp(kind, "write") == 0) return writeAgainAndAgain(times);
    return std::strcmp(kind, "merge") == 0 && mergeAgainAndAgain(times);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: instructionCount word|block|changed|scan|write|merge TIMES\n");
        return 1;
    }
    restartDriver();
    return run(argv[1], std::atoi(argv[2])) ? 0 : 2;
}
