#ifndef REPLY_HANDLING_H
#define REPLY_HANDLING_H

#include <QByteArray>

/// Hands an accepted read reply to decoding, with what the frame at the head of the queue says. By
/// value, as the callback may change the host's buffer.
/// @return 0
int dealReadFrameReturnSaveData(QByteArray reply);

/// Bookkeeping once the exchange of the frame in flight is over, well or given up.
void dealListWhenFinish();

#endif
