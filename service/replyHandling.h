#ifndef REPLY_HANDLING_H
#define REPLY_HANDLING_H

#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

/// Hands an accepted read reply to decoding, with what the frame at the head of the queue says. By
/// value, as the callback may change the host's buffer.
/// @return 0
int dealReadFrameReturnSaveData(QByteArray reply);

/// Bookkeeping at the end of an exchange, accepted or given up: takes the served entry off its
/// list, or moves it to the end, or steps to the next recipe block.
void dealListWhenFinish();

/// Tells the write path how the frame in flight has ended, if it is a write.
/// @param ok  1: the PLC confirmed it; else it failed
void completeWrite(const VARIABLE& var, int ok);

#endif
