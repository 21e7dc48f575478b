#ifndef BENCH_HOST_H
#define BENCH_HOST_H

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>
#include <QString>

#include <initializer_list>

// A host without a line: replies are made before the clock runs, and handed in one after the other.

enum { STATION = 1, FIRST_WORD = 3000, MOST_WORDS = 125, NOTED_STATION = 200 };

/// The name of the marker words.
const QString& markerWords();

/// Starts the driver anew with merge limit 125, an empty callback, nothing polled and an empty
/// cache.
void restartDriver();

/// Polls `blocks` blocks of `words` words each, one behind the other from word 3000 on.
void pollBlocks(int blocks, int words);

/// Fills the cache with `units` words that no benchmark uses.
void cacheOtherUnits(int units);

/// Closes a frame with its checksum, worked out bit by bit.
QByteArray closedFrame(std::initializer_list<int> head, int words = 0, int value = 0);

/// Reply of station 1 to a read of `words` words, all of them `value`.
QByteArray readReply(int words, int value);

/// The checksum as the Modbus serial line guide words it, a bit at a time.
unsigned short bitwiseChecksum(const unsigned char* bytes, int length);

/// One request and its reply. False when the driver has nothing to send or rejects the reply.
bool exchange(FRAME_PRO& frame, QByteArray& reply, QString& errorText);

#endif
