#ifndef READ_MARKS_H
#define READ_MARKS_H

#include "driverState.h"

// Inside the callbacks "RWI" and "-1" a host may start the driver anew or run an exchange. Then the
// frame or the list entry that the caller works on may be gone, and an equal one may be in its
// place. So the caller marks its own before it calls the host, and looks for the mark afterwards.
//
// The mark is the first value byte, which carries nothing in a read. It never outlives the call:
// what is marked leaves its queue at the end of it.

enum { READ_MARK = 1 };

/// True while the reply to the read at the head of the queue is taken in.
inline bool isReplyTakenIn()
{
    if (driver.frameQueue.isEmpty()) return false;
    const FRAME_PRO& frame = driver.frameQueue.at(0);
    return frame.itemCount != 0 && frame.var.value[0] == READ_MARK;
}

/// True while the host is told that the one-shot read at the head of its list has ended.
inline bool isOneShotEndTold()
{
    return !driver.condReadList.isEmpty() && driver.condReadList.at(0).value[0] == READ_MARK;
}

#endif
