#ifndef REQUEST_FRAMES_H
#define REQUEST_FRAMES_H

#include "quorvane_ka_kb_plc.h"

#include <QList>

// Each builder appends one frame to driver.frameQueue. The frames themselves are drawn in
// requestFrames.cpp.

/// A frame with nothing to send and no reply; it only takes one turn of the engine.
void handShakeFrame();

/// Read request for the first element of `variables`; an empty list builds nothing.
/// @return 1
int getReadFrame(const QList<VARIABLE>& variables);

/// Write request for var. One that would not fit FRAME_BYTES, or whose values would not fit
/// VALUE_BYTES, becomes unsendableFrame().
void getWriteFrame(const VARIABLE& var);

/// A frame with nothing to send whose reply no bytes can match, so that a request that cannot be
/// built runs through retries to the give-up that the host sees.
void unsendableFrame(const VARIABLE& var);

#endif
