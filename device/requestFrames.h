#ifndef REQUEST_FRAMES_H
#define REQUEST_FRAMES_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

// Each builder appends one frame to driver.frameQueue. requestFrames.cpp has drawings of the
// frames.

/// A frame with nothing to send and no reply; it only takes one turn of the engine.
void handShakeFrame();

/// Read request for the first element of `variables`; an empty list builds nothing.
/// @return 1
int getReadFrame(const QList<VARIABLE>& variables);

/// Write request for var. A request longer than FRAME_BYTES, or with more values than VALUE_BYTES
/// hold, becomes an unsendableFrame().
void getWriteFrame(const VARIABLE& var);

/// A frame with nothing to send and a reply length that no bytes match. So a request that cannot be
/// built is retried and given up, and the host learns of it.
void unsendableFrame(const VARIABLE& var);

#endif
